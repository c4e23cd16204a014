// The Win32 names that the product uses, with the names, values and record layouts of Windows, for
// hosts that are not Windows. win32/README.md is the contract of each call of these headers.
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
