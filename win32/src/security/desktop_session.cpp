// The desktop. There is no display, so no window is in front. Every program of a user may send
// messages to every other one, so nothing is filtered.
#include <windows.h>

#include "base/os_error.h"

BOOL SetForegroundWindow(HWND window) {
    return host::Fail(window == nullptr ? ERROR_INVALID_WINDOW_HANDLE : ERROR_NOT_SUPPORTED);
}

BOOL ChangeWindowMessageFilter(UINT /*message*/, DWORD flag) {
    return flag == MSGFLT_ADD || flag == MSGFLT_REMOVE || host::Fail(ERROR_INVALID_PARAMETER);
}
