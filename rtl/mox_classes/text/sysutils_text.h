// Trimming, case, delimiters, surrogates, quoting, hashing.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Sysutils {

using System::UnicodeString;

// Code units up to 0x20 are removed. A text that stays as it is shares the argument's buffer; one
// of which nothing is left becomes null.
[[nodiscard]] QV_API UnicodeString Trim(UnicodeString s);
[[nodiscard]] QV_API UnicodeString TrimLeft(UnicodeString s);
[[nodiscard]] QV_API UnicodeString TrimRight(UnicodeString s);
// ASCII letters only. The result has a buffer of its own, also when it is empty.
[[nodiscard]] QV_API UnicodeString LowerCase(UnicodeString s);
[[nodiscard]] QV_API UnicodeString UpperCase(UnicodeString s);

enum TMbcsByteType : unsigned char { mbSingleByte = 0, mbLeadByte = 1, mbTrailByte = 2 };
// Whether the code unit is a lead or trail surrogate; mbSingleByte outside the text.
QV_API TMbcsByteType ByteType(UnicodeString s, int index);
// False outside the text and for surrogates.
QV_API bool IsDelimiter(UnicodeString delimiters, UnicodeString s, int index);
QV_API bool IsPathDelimiter(UnicodeString s, int index);
// The highest position of a unit of `delimiters`, 0 when there is none. Code unit 0 and trail
// surrogates never match.
QV_API int LastDelimiter(UnicodeString delimiters, UnicodeString s);
// The first `unit` of a zero-terminated text, its terminator included; else null.
QV_API const WCHAR* StrScan(const WCHAR* text, WCHAR unit);
// ASCII letters, digits and '_' from the second code unit on; the first, the dot of a file
// extension, is not looked at.
QV_API bool IsAlphaNumericString(UnicodeString s);
// The hash of XML name tables: two units make one 32-bit step. Equal texts have equal hashes;
// anybody can make texts whose hashes collide.
QV_API ULONG StringHash(UnicodeString s);
// Copies at most capacity - 1 code units and a terminator; the result is the number copied. Writes
// nothing when the capacity is below 1.
QV_API int CopyCch(WCHAR* dest, int capacity, UnicodeString s);

[[nodiscard]] QV_API UnicodeString AnsiQuotedStr(UnicodeString s, WCHAR quote);
[[nodiscard]] QV_API UnicodeString QuotedStr(UnicodeString s);
// Reads the quoted text at `p` and moves `p` behind it; null or another unit at `p` gives the empty
// string and leaves `p`. A text without closing quote ends at the terminator and loses its last
// code unit.
QV_API UnicodeString AnsiExtractQuotedStr(const WCHAR*& p, WCHAR quote);

}  // namespace Sysutils
