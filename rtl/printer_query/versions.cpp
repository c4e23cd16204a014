#include "printer_query/versions.h"

#include <windows.h>

#include <cstring>
#include <iterator>
#include <vector>

#include "mox_classes/text/sysutils_numbers.h"
#include "mox_classes/text/wide_format.h"

namespace {

// In bytes. Real version resources are far smaller.
constexpr DWORD kLargestResource = 16 * 1024 * 1024;

// The format itself, or null when it reads other arguments than these.
template <class... Args>
UnicodeString FormatChecked(const UnicodeString& format, const Args&... arguments) {
    constexpr System::TFormatKind kKinds[] = {System::FormatKindOf<Args>()...};
    for (int count = static_cast<int>(std::size(kKinds)); count >= 0; --count) {
        if (System::FormatTakes(format.t_str(), kKinds, count)) {
            return Sysutils::UnicodePrintf(format, arguments...);
        }
    }
    return UnicodeString();
}

bool ReadFixedInfo(const UnicodeString& file_name, VS_FIXEDFILEINFO& info) {
    DWORD ignored = 0;
    const DWORD size = GetFileVersionInfoSizeW(file_name.t_str(), &ignored);
    if (size == 0 || size > kLargestResource) return false;
    std::vector<BYTE> resource(size);
    void* found = nullptr;
    UINT found_size = 0;
    if (!GetFileVersionInfoW(file_name.t_str(), 0, size, resource.data()) ||
        !VerQueryValueW(resource.data(), TEXT("\\"), &found, &found_size) || found == nullptr ||
        found_size < sizeof info) {
        return false;
    }
    std::memcpy(&info, found, sizeof info);
    return true;
}

}  // namespace

UnicodeString FormatFileVersion(const UnicodeString& fileName, const UnicodeString& format) {
    VS_FIXEDFILEINFO info;
    if (!ReadFixedInfo(fileName, info)) return UnicodeString();
    return FormatChecked(format, HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS),
                         HIWORD(info.dwFileVersionLS), LOWORD(info.dwFileVersionLS));
}

UnicodeString FormatOSVersion(const UnicodeString& format) {
    OSVERSIONINFOEXW info = {};
    info.dwOSVersionInfoSize = sizeof info;
    if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info))) return UnicodeString();
    info.szCSDVersion[std::size(info.szCSDVersion) - 1] = 0;
    const WCHAR* service_pack = info.szCSDVersion;
    return FormatChecked(format, info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber,
                         service_pack, info.dwPlatformId, info.wServicePackMajor,
                         info.wServicePackMinor, info.wSuiteMask, info.wProductType);
}
