// Where the fields of a format text lie.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"

// One field: '{' at begin, the specification (or '}') at spec, behind the '}' end.
struct TFieldSpan {
    const WCHAR* begin = nullptr;
    const WCHAR* spec = nullptr;
    const WCHAR* end = nullptr;

    UnicodeString Name() const { return UnicodeString(begin + 1, spec - begin - 1); }
    UnicodeString Spec() const { return UnicodeString(spec, end - spec - 1); }
};

// The first field at or behind `text`; false when there is none. Null is an empty text. `field` is
// fresh, or holds what the last search in the same text found: a '{' inside that field's name
// begins one that ends with it, and is not searched again.
bool FindField(const WCHAR* text, TFieldSpan& field);
