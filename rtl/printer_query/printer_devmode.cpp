// The settings blocks of printers: those of the printer itself and those of its user.
#include <cstddef>
#include <cstring>
#include <span>

#include "printer_query/printer_handle.h"
#include "printer_query/record_result.h"
#include "printer_query/spooler.h"

using Mox::GetSysError;
using Mox::LogHere;
using printer_query::CodeOf;
using printer_query::HandleNumber;
using printer_query::Writable;
using Sysutils::UnicodePrintf;

namespace {

using TDevModeResult = printer_query::TRecordResult<DEVMODEW>;

constexpr DWORD kUserLevel = 9;
constexpr UINT kBroadcastMilliseconds = 500;
// The smallest block that is accepted: it holds both sizes and the mask of its fields.
constexpr std::size_t kSmallestBlock = offsetof(DEVMODEW, dmFields) + sizeof(DWORD);

// The size that the block at the start of `bytes` states, or 0 when `bytes` is shorter than that.
// The block need not be aligned.
DWORD StatedSize(std::span<const BYTE> bytes) {
    if (bytes.size() < kSmallestBlock) return 0;
    WORD size;
    WORD extra;
    std::memcpy(&size, bytes.data() + offsetof(DEVMODEW, dmSize), sizeof size);
    std::memcpy(&extra, bytes.data() + offsetof(DEVMODEW, dmDriverExtra), sizeof extra);
    const DWORD stated = DWORD{size} + extra;
    return size >= kSmallestBlock && stated <= bytes.size() ? stated : 0;
}

// Copies the block at `devmode`. The spooler put it somewhere into `buffer`; false when it is not
// wholly inside.
bool CopyBlock(std::span<const BYTE> buffer, const DEVMODEW* devmode, TDevModeResult& result) {
    const auto begin = reinterpret_cast<UINT_PTR>(buffer.data());
    const auto place = reinterpret_cast<UINT_PTR>(devmode);
    if (place < begin || place - begin > buffer.size()) return false;
    const std::span<const BYTE> rest = buffer.subspan(place - begin);
    const DWORD size = StatedSize(rest);
    if (size == 0) return false;
    // A block shorter than DEVMODEW counts as one record; the holder is as large as the block.
    result.ReserveBlock(size);
    std::memcpy(result.Bytes(), rest.data(), size);
    return true;
}

// Stores `code` in the result and logs it. `format` ends with the place of the error text.
template <class... Args>
void Fail(TDevModeResult& result, DWORD code, const WCHAR* format, const Args&... arguments) {
    result.SetErrorCode(code);
    LogHere('X', UnicodePrintf(format, arguments..., GetSysError(code, true)));
}

System::TPrinterHandle OpenForUse(const UnicodeString& name) {
    PRINTER_DEFAULTSW defaults = {nullptr, nullptr, PRINTER_ACCESS_USE};
    return printer_query::OpenNamedPrinter(name, &defaults);
}

TW32StructData<DEVMODEW> GetGlobalDevModeByHandle(HANDLE printer) {
    TDevModeResult result;
    const unsigned number = HandleNumber(printer);
    DWORD needed = 0;
    GetPrinterW(printer, kUserLevel, nullptr, 0, &needed);
    const System::TGlobalBlock block(GlobalAlloc(GPTR, needed));
    const auto* bytes = static_cast<const BYTE*>(block.Get());
    LogHere(' ', UnicodePrintf(TEXT("[GetGlobalDevMode(x%x)] Using level 9"), number));

    const DWORD size = block ? needed : 0;
    const DWORD code =
        CodeOf(GetPrinterW(printer, kUserLevel, static_cast<LPBYTE>(block.Get()), size, &needed));
    if (code != NO_ERROR) {
        Fail(result, code, TEXT("[GetGlobalDevMode(x%x)] GetPrinter failed: %s"), number);
        return result;
    }
    PRINTER_INFO_9W record = {};
    if (size >= sizeof record) std::memcpy(&record, bytes, sizeof record);
    if (record.pDevMode == nullptr) {
        LogHere('*',
                UnicodePrintf(TEXT("[GetGlobalDevMode(x%x)] No default DEVMODE found"), number));
    } else if (!CopyBlock({bytes, size}, record.pDevMode, result)) {
        Fail(result, ERROR_INVALID_DATA,
             TEXT("[GetGlobalDevMode(x%x)] The DEVMODE does not fit the returned data: %s"),
             number);
    }
    return result;
}

// Lets the driver merge `devmode`, or ask the user, into a block of its own size.
void MergeDevMode(HANDLE printer, const UnicodeString& name, DEVMODEW* devmode,
                  TDevModeResult& result) {
    const LONG size = DocumentPropertiesW(nullptr, printer, Writable(name), nullptr, devmode, 0);
    if (size < 1) {
        Fail(result, CodeOf(FALSE),
             TEXT("[SetGlobalDevMode('%s')] DocumentProperties returned 0: %s"), name);
        return;
    }
    result.ReserveBlock(static_cast<DWORD>(size));
    const DWORD mode =
        devmode != nullptr ? DM_IN_BUFFER | DM_OUT_BUFFER : DM_IN_PROMPT | DM_OUT_BUFFER;
    auto* merged = reinterpret_cast<LPDEVMODEW>(result.Bytes());
    if (DocumentPropertiesW(nullptr, printer, Writable(name), merged, devmode, mode) != IDOK) {
        Fail(result, CodeOf(FALSE), TEXT("[SetGlobalDevMode('%s')] DocumentProperties failed: %s"),
             name);
    } else if (StatedSize({result.Bytes(), static_cast<std::size_t>(size)}) == 0) {
        Fail(result, ERROR_INVALID_DATA,
             TEXT("[SetGlobalDevMode('%s')] The DEVMODE does not fit the returned data: %s"), name);
    }
}

void StoreDevMode(HANDLE printer, const UnicodeString& name, TDevModeResult& result) {
    PRINTER_INFO_9W record = {reinterpret_cast<LPDEVMODEW>(result.Bytes())};
    if (SetPrinterW(printer, kUserLevel, reinterpret_cast<LPBYTE>(&record), 0)) {
        LogHere('i', TEXT("SetPrinter() called successfully"));
    } else {
        Fail(result, CodeOf(FALSE), TEXT("[SetGlobalDevMode('%s')] SetPrinter failed: %s"), name);
    }
}

void BroadcastChange(const UnicodeString& name) {
    SendMessageTimeoutW(HWND_BROADCAST, WM_DEVMODECHANGE, 0, reinterpret_cast<LPARAM>(name.t_str()),
                        SMTO_NORMAL, kBroadcastMilliseconds, nullptr);
    LogHere('i', UnicodePrintf(
                     TEXT("[SetGlobalDevMode('%s')] Broadcasted the DEVMODE change notification"),
                     name));
}

}  // namespace

TW32StructData<DEVMODEW> GetPrinterDevMode(UnicodeString name) {
    TDevModeResult result;
    const TW32StructData<PRINTER_INFO_2W> info = GetPrinterInfo2(name);
    if (!info.IsSuccess()) {
        LogHere('X',
                UnicodePrintf(TEXT("[GetPrinterDevMode(\"%s\")] GetPrinterInfo2() failed."), name));
        result.SetErrorCode(info.GetErrorCode());
        return result;
    }
    const PRINTER_INFO_2W& record = info[0];
    const auto* bytes = reinterpret_cast<const BYTE*>(&record);
    if (record.pDevMode == nullptr) {
        LogHere('X', UnicodePrintf(
                         TEXT("[GetPrinterDevMode(\"%s\")] DEVMODE of the PRINTER_INFO_2 is NULL"),
                         name));
    } else if (!CopyBlock({bytes, static_cast<std::size_t>(info.Size())}, record.pDevMode,
                          result)) {
        Fail(result, ERROR_INVALID_DATA,
             TEXT("[GetPrinterDevMode(\"%s\")] The DEVMODE does not fit the returned data: %s"),
             name);
    }
    return result;
}

TW32StructData<DEVMODEW> GetGlobalDevMode(const UnicodeString& name) {
    const System::TPrinterHandle printer = OpenForUse(name);
    if (printer) return GetGlobalDevModeByHandle(printer.Get());
    TDevModeResult result;
    Fail(result, CodeOf(FALSE), TEXT("[GetGlobalDevMode('%s')] OpenPrinter failed: %s"), name);
    return result;
}

TW32StructData<DEVMODEW> SetGlobalDevMode(const UnicodeString& name, DEVMODEW* devmode,
                                          HWND /*owner*/) {
    TDevModeResult result;
    System::TPrinterHandle printer = OpenForUse(name);
    if (!printer) {
        Fail(result, CodeOf(FALSE), TEXT("[SetGlobalDevMode('%s')] OpenPrinter failed: %s"), name);
        return result;
    }
    MergeDevMode(printer.Get(), name, devmode, result);
    if (result.IsSuccess()) StoreDevMode(printer.Get(), name, result);
    printer.Reset();
    if (result.IsSuccess()) BroadcastChange(name);
    return result;
}
