// Numbers as text and back.
//
// Integers: an optional sign and decimal digits, or 0x and hexadecimal digits, and nothing else, no
// blanks either. A sign or prefix alone is 0; too large values wrap. Floating point: what the C
// run-time reads in its "C" locale, leading blanks included; the empty text is 0.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Sysutils {

using System::UnicodeString;

// Throw "'text' is not a valid integer value".
QV_API int StrToInt(UnicodeString s);
QV_API std::int64_t StrToInt64(UnicodeString s);
QV_API int StrToIntDef(UnicodeString s, int def);
QV_API std::int64_t StrToInt64Def(UnicodeString s, std::int64_t def);
// On failure `value` holds what was read before the bad character.
[[nodiscard]] QV_API bool TryStrToInt(UnicodeString s, int& value);
[[nodiscard]] QV_API bool TryStrToInt64(UnicodeString s, std::int64_t& value);
QV_API void* StrToHandleDef(const UnicodeString& s, void* def);

// Throws "'text' is not a valid floating point value" unless the whole text is a number.
QV_API long double StrToFloat(UnicodeString s);
QV_API long double StrToFloatDef(UnicodeString s, long double def);
// Always store what was read; true when that was the whole text.
[[nodiscard]] QV_API bool TryStrToFloat(UnicodeString s, float& value);
[[nodiscard]] QV_API bool TryStrToFloat(UnicodeString s, double& value);
[[nodiscard]] QV_API bool TryStrToFloat(UnicodeString s, long double& value);

QV_API UnicodeString IntToStr(int value);
QV_API UnicodeString IntToHex(int value, int digits);
// Fixed notation, six decimals.
QV_API UnicodeString FloatToStr(long double value);

QV_API UnicodeString UnicodeVPrintf(UnicodeString format, va_list arguments);
template <class... Args>
UnicodeString UnicodePrintf(UnicodeString format, const Args&... args) {
    UnicodeString text;
    text.printf(format.t_str(), args...);
    return text;
}

}  // namespace Sysutils
