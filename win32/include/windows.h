// The Win32 names as far as the product uses them, with the system's own names, values and record
// layouts, for hosts that are not Windows. See win32/README.md for what each call means there.
#pragma once

#include "minwindef.h"
#include "securitybaseapi.h"
#include "winbase.h"
#include "winerror.h"
#include "wingdi.h"
#include "winnls.h"
#include "winreg.h"
#include "winspool.h"
#include "winuser.h"
#include "winver.h"
