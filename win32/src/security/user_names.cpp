// The user's name, as an account name and with the machine in front.
#include <windows.h>

#include <secext.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "base/os_error.h"
#include "security/accounts.h"
#include "text/host_text.h"

using namespace host;

namespace {

// The longest machine name of Windows.
constexpr std::size_t kMaxMachineName = 15;

WideString UserName() {
    return FromUtf8(NameOfUser(geteuid()));
}

// The host's name without its domain, in capitals.
WideString MachineName() {
    char buffer[256] = {};
    if (gethostname(buffer, sizeof buffer - 1) != 0 || buffer[0] == 0) return u"LOCALHOST";
    std::string name(buffer);
    name.resize(std::min({name.find('.'), name.size(), kMaxMachineName}));
    std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return FromUtf8(name);
}

// Copies the text when it fits with its terminator. `needed` receives the room that both take.
bool Copy(const WideString& text, LPWSTR buffer, DWORD& needed) {
    const DWORD room = needed;
    needed = static_cast<DWORD>(text.size()) + 1;
    if (buffer == nullptr || room < needed) return false;
    std::copy_n(text.c_str(), needed, buffer);
    return true;
}

}  // namespace

BOOL GetUserNameW(LPWSTR buffer, LPDWORD size) {
    if (size == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    return Copy(UserName(), buffer, *size) || Fail(ERROR_INSUFFICIENT_BUFFER);
}

BOOLEAN GetUserNameExW(EXTENDED_NAME_FORMAT format, LPWSTR buffer, PULONG size) {
    if (size == nullptr) return static_cast<BOOLEAN>(Fail(ERROR_INVALID_PARAMETER));
    if (format != NameSamCompatible) return static_cast<BOOLEAN>(Fail(ERROR_NONE_MAPPED));
    if (!Copy(MachineName() + u'\\' + UserName(), buffer, *size)) {
        return static_cast<BOOLEAN>(Fail(ERROR_MORE_DATA));
    }
    --*size;  // a success counts without the terminator
    return TRUE;
}
