// The name of the user.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// The calling thread's user, with `samCompatible` behind the domain and a backslash. "" when the
// system does not tell. Overloads the system's function of that name.
QV_API UnicodeString GetUserNameW(bool samCompatible);
