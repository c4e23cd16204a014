// A driver configuration module without a user interface: what the spooler needs to answer for a
// printer whose settings block has QV_BLOCK_BYTES bytes. It merges a block whole.
#include <windows.h>

#include <winspool.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

constexpr WORD kBlockBytes = QV_BLOCK_BYTES;

/// The record behind DrvDocumentPropertySheets' second argument; the SDK headers of the cross
/// compiler leave it out.
struct DocumentPropertyHeader {
    WORD size;
    WORD reserved;
    HANDLE printer;
    LPWSTR printer_name;
    DEVMODEW* in;
    DEVMODEW* out;
    DWORD out_size;
    DWORD mode;
};
static_assert(sizeof(DocumentPropertyHeader) == 48 && offsetof(DocumentPropertyHeader, mode) == 44);

void FillDefaults(DEVMODEW& block, const WCHAR* printer) {
    std::memset(&block, 0, kBlockBytes);
    if (printer != nullptr) lstrcpynW(block.dmDeviceName, printer, CCHDEVICENAME);
    block.dmSpecVersion = 0x0401;
    block.dmDriverVersion = 1;
    block.dmSize = sizeof(DEVMODEW);
    block.dmDriverExtra = kBlockBytes - sizeof(DEVMODEW);
}

void Merge(DEVMODEW& block, const DEVMODEW& in) {
    const size_t given = size_t{in.dmSize} + in.dmDriverExtra;
    std::memcpy(&block, &in, std::min<size_t>(given, kBlockBytes));
    block.dmSize = sizeof(DEVMODEW);
    block.dmDriverExtra = kBlockBytes - sizeof(DEVMODEW);
}

}  // namespace

extern "C" __declspec(dllexport) LONG WINAPI
    DrvDocumentPropertySheets(void* sheets, LPARAM parameter) {
    if (sheets != nullptr) return -1;
    auto& header = *reinterpret_cast<DocumentPropertyHeader*>(parameter);
    if (header.mode == 0 || header.out == nullptr) {
        header.out_size = kBlockBytes;
        return kBlockBytes;
    }
    if ((header.mode & DM_PROMPT) != 0) return IDCANCEL;
    FillDefaults(*header.out, header.printer_name);
    if ((header.mode & DM_MODIFY) != 0 && header.in != nullptr) Merge(*header.out, *header.in);
    return IDOK;
}

extern "C" __declspec(dllexport) DWORD WINAPI
    DrvDeviceCapabilities(HANDLE, const WCHAR*, WORD capability, void*, DEVMODEW*) {
    switch (capability) {
        case DC_VERSION:
            return 0x0401;
        case DC_SIZE:
            return sizeof(DEVMODEW);
        case DC_EXTRA:
            return kBlockBytes - sizeof(DEVMODEW);
        default:
            return static_cast<DWORD>(-1);
    }
}
