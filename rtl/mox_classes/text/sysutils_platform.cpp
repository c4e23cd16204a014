#include "mox_classes/text/sysutils_platform.h"

#include <windows.h>

#include <algorithm>

namespace Sysutils {

namespace {

// Text of a platform call that takes a buffer and its size and answers the size it needs (with the
// terminator) when that is too small, 0 when it fails. What it needs may grow between two calls.
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

}  // namespace Sysutils
