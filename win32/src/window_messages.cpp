// Window messages. No process of this host has windows, so a broadcast has nobody to wait for.
#include <windows.h>

LRESULT SendMessageTimeoutW(HWND window, UINT, WPARAM, LPARAM, UINT, UINT, PDWORD_PTR result) {
    if (window != HWND_BROADCAST) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return 0;
    }
    if (result != nullptr) *result = 0;
    return TRUE;
}
