// Comparison by the rules of the user's locale.
#include <windows.h>

#include "mox_classes/text/unicode_string.h"

namespace System {

namespace {

int CompareByLocale(const UnicodeString& a, const UnicodeString& b, DWORD flags) {
    if (a.data() == b.data()) return 0;
    if (a.IsEmpty()) return -1;
    if (b.IsEmpty()) return 1;
    return CompareStringW(LOCALE_USER_DEFAULT, flags, a.data(), a.Length(), b.data(), b.Length()) -
           CSTR_EQUAL;
}

}  // namespace

int UnicodeString::Compare(const UnicodeString& other) const {
    return CompareByLocale(*this, other, 0);
}
int UnicodeString::CompareIC(const UnicodeString& other) const {
    return CompareByLocale(*this, other, NORM_IGNORECASE);
}

}  // namespace System
