// The system's text for an error code.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Mox {

// The system's message with its trailing line break, in the neutral language; empty for an unknown
// code. With `withCode` it reads "[5]Access is denied.\r\n".
QV_API UnicodeString GetSysError(DWORD code, bool withCode);

}  // namespace Mox
