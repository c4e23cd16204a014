// Comparing and searching counted runs of UTF-16 units. Ends are those of a string's block: the
// terminator behind `length` units may be read, nothing behind it.
#pragma once

#include <windows.h>

namespace System {

// Negative, 0 or positive, as the first difference at or before the first 0 unit says.
int CompareUnits(const WCHAR* a, int a_length, const WCHAR* b, int b_length);

// The index of the first `unit` or 0 unit; `length`, where the terminator is, when there is none
// before.
int FindUnitOrEnd(const WCHAR* text, int length, WCHAR unit);

// The index of the first `sub` in `text`, -1 when there is none. Both end at their first 0 unit.
int FindUnits(const WCHAR* text, int length, const WCHAR* sub, int sub_length);

}  // namespace System
