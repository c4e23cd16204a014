// What the user may do with a file.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Checks `desiredAccess` (generic rights are mapped to those of files) against the file's owner,
// group and access list, without opening it. 0 or the Win32 code of the step that failed. On
// success `grantedAccess` is what the check grants: 0 when the access is denied. It stays as it is
// on failure and when the thread cannot take on its own user, which counts as success.
QV_API LONG CheckFileAccess(const UnicodeString& fileName, DWORD& grantedAccess,
                            DWORD desiredAccess);
