#include <windows.h>

#include <cstring>

#include "mox_classes/text/sysutils_platform.h"

namespace Sysutils {

namespace {

// The platform's version as it was at the first question.
struct TVersion {
    DWORD major = 0;
    DWORD minor = 0;
    DWORD platform_id = 0;
    DWORD build = 0;
    WCHAR service_pack[128] = {};
};

TVersion ReadVersion() {
    TVersion version;
    OSVERSIONINFOW info = {};
    static_assert(sizeof info == 276);
    info.dwOSVersionInfoSize = sizeof info;
    if (!GetVersionExW(&info)) return version;
    version.major = info.dwMajorVersion;
    version.minor = info.dwMinorVersion;
    version.platform_id = info.dwPlatformId;
    constexpr DWORD kBuildInLowWord = 1;
    version.build =
        info.dwPlatformId == kBuildInLowWord ? info.dwBuildNumber & 0xFFFF : info.dwBuildNumber;
    std::memcpy(version.service_pack, info.szCSDVersion, sizeof version.service_pack);
    return version;
}

}  // namespace

bool CheckWin32Version(int major, int minor) {
    static const TVersion version = ReadVersion();
    const int own_major = static_cast<int>(version.major);
    return own_major > major || (own_major == major && static_cast<int>(version.minor) >= minor);
}

}  // namespace Sysutils
