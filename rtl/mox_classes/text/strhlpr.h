// The string's operations in procedural form, for callers that hold strings by reference only.
//
// Each does what the member of UnicodeString does, with the same errors: "Integer overflow!" for a
// text that gets too long, std::bad_alloc without memory; the string then stays as it was. Nothing
// is owned here.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Strhlpr {

using System::UnicodeString;

// The string becomes null.
QV_API void UnicodeFree(UnicodeString& s);
// `dst` shares the buffer of `src`.
QV_API void UnicodeAssign(UnicodeString& dst, const UnicodeString& src);
// Text of the system ANSI code page; null when there is none.
QV_API void UnicodeFromPChar(UnicodeString& s, const char* text);
QV_API void UnicodeSetLength(UnicodeString& s, int length);
QV_API void UnicodeInsert(UnicodeString& s, const UnicodeString& sub, int index);
QV_API void UnicodeDelete(UnicodeString& s, int index, int count);
QV_API UnicodeString UnicodeCat(const UnicodeString& a, const UnicodeString& b);
QV_API void UnicodeAppend(UnicodeString& a, const UnicodeString& b);
QV_API int UnicodePos(const UnicodeString& s, const UnicodeString& sub);
QV_API bool UnicodeEqual(const UnicodeString& a, const UnicodeString& b);
QV_API bool UnicodeLess(const UnicodeString& a, const UnicodeString& b);
QV_API bool UnicodeGreater(const UnicodeString& a, const UnicodeString& b);

}  // namespace Strhlpr
