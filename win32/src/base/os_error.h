// Win32 codes for this host's errno values.
#pragma once

#include <windows.h>

namespace host {

// The Win32 code of an errno value; ERROR_GEN_FAILURE for one without a counterpart.
DWORD ErrorFromErrno(int code);

// Sets the last error and returns false, for the failing exits of BOOL functions.
inline BOOL Fail(DWORD code) {
    SetLastError(code);
    return FALSE;
}

}  // namespace host
