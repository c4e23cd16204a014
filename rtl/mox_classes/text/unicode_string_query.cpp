// Ordinal comparison, search and the members that are utilities applied to the string.
#include <windows.h>

#include <cstring>

#include "mox_classes/text/sysutils_numbers.h"
#include "mox_classes/text/sysutils_text.h"
#include "mox_classes/text/unicode_string.h"
#include "mox_classes/units/unit_scan.h"

namespace System {

// Most different strings differ in their first unit, and equal ones often share one buffer. These
// two cases are decided before the units are compared.
bool UnicodeString::operator==(const UnicodeString& other) const noexcept {
    if (data_ == other.data_) return true;
    const WCHAR* const a = t_str();
    const WCHAR* const b = other.t_str();
    const int length = Length();
    if (*a != *b) return false;
    const auto bytes = static_cast<std::size_t>(length) * sizeof(WCHAR);
    if (length == other.Length() && std::memcmp(a, b, bytes) == 0) return true;
    return CompareUnits(a, length, b, other.Length()) == 0;
}
bool UnicodeString::operator!=(const UnicodeString& other) const noexcept {
    return !(*this == other);
}
bool UnicodeString::operator<(const UnicodeString& other) const noexcept {
    return CompareUnits(t_str(), Length(), other.t_str(), other.Length()) < 0;
}
bool UnicodeString::operator<=(const UnicodeString& other) const noexcept {
    return !(other < *this);
}
bool UnicodeString::operator>(const UnicodeString& other) const noexcept {
    return other < *this;
}
bool UnicodeString::operator>=(const UnicodeString& other) const noexcept {
    return !(*this < other);
}

int UnicodeString::Pos(const UnicodeString& sub) const noexcept {
    return FindUnits(t_str(), Length(), sub.t_str(), sub.Length()) + 1;
}

UnicodeString UnicodeString::Trim() const {
    return Sysutils::Trim(*this);
}
UnicodeString UnicodeString::TrimLeft() const {
    return Sysutils::TrimLeft(*this);
}
UnicodeString UnicodeString::TrimRight() const {
    return Sysutils::TrimRight(*this);
}
UnicodeString UnicodeString::LowerCase() const {
    return Sysutils::LowerCase(*this);
}
UnicodeString UnicodeString::UpperCase() const {
    return Sysutils::UpperCase(*this);
}
int UnicodeString::ToInt() const {
    return Sysutils::StrToInt(*this);
}
int UnicodeString::ToIntDef(int value) const {
    return Sysutils::StrToIntDef(*this, value);
}
double UnicodeString::ToDouble() const {
    return static_cast<double>(Sysutils::StrToFloat(*this));
}
bool UnicodeString::IsDelimiter(const UnicodeString& delimiters, int index) const {
    return Sysutils::IsDelimiter(delimiters, *this, index);
}
bool UnicodeString::IsPathDelimiter(int index) const {
    return Sysutils::IsPathDelimiter(*this, index);
}
int UnicodeString::LastDelimiter(const UnicodeString& delimiters) const {
    return Sysutils::LastDelimiter(delimiters, *this);
}
UnicodeString::TStringLeadCharType UnicodeString::ByteType(int index) const {
    return static_cast<TStringLeadCharType>(Sysutils::ByteType(*this, index));
}
bool UnicodeString::IsLeadSurrogate(int index) const {
    return ByteType(index) == lctLead;
}
bool UnicodeString::IsTrailSurrogate(int index) const {
    return ByteType(index) == lctTrail;
}

}  // namespace System
