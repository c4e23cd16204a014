// Command lines: a program path and its parameters in one text.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Sysutils {

using System::UnicodeString;

// Splits `line`; true when the program is a file. An unquoted path with blanks is found by trying
// ever longer prefixes. Environment variables count for the search, but stay in `program`.
QV_API bool ParseCommandLine(const UnicodeString& line, UnicodeString& program,
                             UnicodeString& params);
// A program with a blank is quoted.
QV_API UnicodeString BuildCommandLine(const UnicodeString& program, const UnicodeString& params);

}  // namespace Sysutils
