// The header below has its names only for programs that say which side of the system they are on.
#if !defined(SECURITY_WIN32)
#define SECURITY_WIN32
#endif

#include "os_xp/user_name.h"

#include <secext.h>

namespace {

// The text of a call that takes a buffer and its size, and answers the room it needs, terminator
// included, when that is too small.
template <class Call>
UnicodeString TextOf(Call call) {
    DWORD size = 0;
    call(nullptr, &size);
    if (size == 0) return UnicodeString();
    UnicodeString text;
    text.SetLength(size);
    if (!call(text.data(), &size)) return UnicodeString();
    return UnicodeString(text.t_str());
}

}  // namespace

UnicodeString GetUserNameW(bool samCompatible) {
    if (!samCompatible) {
        return TextOf([](WCHAR* buffer, DWORD* size) { return ::GetUserNameW(buffer, size) != 0; });
    }
    return TextOf([](WCHAR* buffer, DWORD* size) {
        ULONG units = *size;
        const bool done = GetUserNameExW(NameSamCompatible, buffer, &units) != 0;
        *size = units;
        return done;
    });
}
