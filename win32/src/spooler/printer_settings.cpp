// A printer's data values, and settings blocks without a driver's module.
#include <algorithm>

#include "spooler/print_keys.h"
#include "spooler/printer_handle.h"
#include "spooler/record_buffer.h"
#include "text/host_text.h"

using namespace host;

namespace {

LONG Refuse(DWORD code) {
    SetLastError(code);
    return -1;
}

// The block that the printer starts from: the user's, else the printer's own. It may be empty.
LSTATUS StartingBlock(const OpenPrinter& printer, std::vector<BYTE>& block) {
    std::vector<BYTE> of_printer;
    const LSTATUS code = ReadPrinterKey(printer.Key(), [&](const RegKey& key) {
        of_printer = BlockValue(PrintValues(key), u"Default DevMode");
        block = UserBlock(printer.Name());
    });
    if (block.empty()) block = std::move(of_printer);
    return code;
}

DWORD HandOutData(const RegValue& value, LPDWORD type, LPBYTE data, DWORD size, LPDWORD needed) {
    *needed = static_cast<DWORD>(value.data.size());
    if (type != nullptr) *type = value.type;
    if (size < value.data.size()) return ERROR_MORE_DATA;
    std::ranges::copy(value.data, data);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD GetPrinterDataW(HANDLE printer, LPWSTR name, LPDWORD type, LPBYTE data, DWORD size,
                      LPDWORD needed) {
    const HandlePin<OpenPrinter> open(printer);
    if (!open) return ERROR_INVALID_HANDLE;
    if (name == nullptr || !BufferIsGiven(data, size, needed)) return ERROR_INVALID_PARAMETER;
    DWORD outcome = ERROR_FILE_NOT_FOUND;
    const LSTATUS code = ReadPrinterKey(open->Key(), [&](const RegKey& key) {
        const std::optional<RegKey> values = key.FindKey(u"PrinterDriverData");
        const auto value = values ? values->FindValue(name) : std::nullopt;
        if (value) outcome = HandOutData(*value, type, data, size, needed);
    });
    return code != ERROR_SUCCESS ? static_cast<DWORD>(code) : outcome;
}

// Only a driver knows its private part, so the block is copied whole: the caller's, else the one
// that the printer starts from. The size that is returned is enough for both.
LONG DocumentPropertiesW(HWND, HANDLE printer, LPWSTR, LPDEVMODEW output, LPDEVMODEW input,
                         DWORD mode) {
    const HandlePin<OpenPrinter> open(printer);
    if (!open) return Refuse(ERROR_INVALID_HANDLE);
    const std::size_t given = input == nullptr ? 0 : BlockSize(input);
    if (input != nullptr && given == 0) return Refuse(ERROR_INVALID_PARAMETER);
    std::vector<BYTE> start;
    const LSTATUS code = StartingBlock(*open, start);
    if (code != ERROR_SUCCESS) return Refuse(static_cast<DWORD>(code));
    if (given == 0 && start.empty()) return Refuse(ERROR_INVALID_DATA);
    if (mode == 0 || output == nullptr) return static_cast<LONG>(std::max(given, start.size()));
    if ((mode & DM_IN_PROMPT) != 0) {
        SetLastError(ERROR_CANCELLED);
        return IDCANCEL;
    }
    const bool use_input = (mode & DM_IN_BUFFER) != 0 && given != 0;
    if (!use_input && start.empty()) return Refuse(ERROR_INVALID_DATA);
    if ((mode & DM_OUT_BUFFER) == 0) return IDOK;
    if (use_input) {
        std::memmove(output, input, given);
    } else {
        std::memcpy(output, start.data(), start.size());
    }
    return IDOK;
}
