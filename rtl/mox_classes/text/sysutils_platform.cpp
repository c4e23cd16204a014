#include "mox_classes/text/sysutils_platform.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

namespace Sysutils {

namespace {

// The version of Windows. It is read once, at the first question.
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

// The text of a platform call that takes a buffer and its size. A call that needs more room returns
// the size that it needs, terminator included; one that fails returns 0. The needed size may grow
// between two calls, so this asks again.
template <class Call>
UnicodeString TextOf(Call call) {
    DWORD size = call(nullptr, 0);
    while (size > 0) {
        UnicodeString text;
        text.SetLength(size - 1);
        const DWORD answer = call(text.data(), size);
        if (answer <= size) {
            const WCHAR* const start = text.t_str();
            const auto length =
                std::find(start, start + std::min(answer, size - 1), WCHAR{0}) - start;
            return length == 0 ? UnicodeString() : text.SetLength(length);
        }
        size = answer;
    }
    return UnicodeString();
}

}  // namespace

UnicodeString GetEnvExpanded(UnicodeString text) {
    return TextOf([&](WCHAR* buffer, DWORD size) {
        return ExpandEnvironmentStringsW(text.t_str(), buffer, size);
    });
}

UnicodeString GetSystemDir() {
    return TextOf([](WCHAR* buffer, DWORD size) { return GetSystemDirectoryW(buffer, size); });
}

UnicodeString GetTempPathW() {
    return TextOf([](WCHAR* buffer, DWORD size) { return ::GetTempPathW(size, buffer); });
}

UnicodeString ExeName(HINSTANCE module) {
    constexpr DWORD kSize = 4095;
    WCHAR buffer[kSize + 1];
    return UnicodeString(buffer, GetModuleFileNameW(module, buffer, kSize));
}

UnicodeString LoadStrW(int) {
    return UnicodeString();
}

bool CheckWin32Version(int major, int minor) {
    static const TVersion version = ReadVersion();
    const int own_major = static_cast<int>(version.major);
    return own_major > major || (own_major == major && static_cast<int>(version.minor) >= minor);
}

}  // namespace Sysutils
