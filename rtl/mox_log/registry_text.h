// The one place that reads a text value of the registry.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"

namespace Mox {

enum class TRegTextState { Found, Missing, WrongType, Failed };

struct TRegText {
    TRegTextState state = TRegTextState::Missing;
    DWORD type = REG_NONE;  // of a value of another type
    LSTATUS code = 0;       // of a read that failed
    UnicodeString text;
};

// Reads the REG_SZ value `name`. Its last two bytes count as the terminator, whatever they are, and
// an odd byte is dropped. A value that grows between the size query and the read is read again.
TRegText ReadRegText(HKEY key, const UnicodeString& name);

}  // namespace Mox
