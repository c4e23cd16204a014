// The calling thread's last error code.
#include <windows.h>

namespace {
thread_local DWORD last_error = 0;
}

DWORD GetLastError() {
    return last_error;
}

void SetLastError(DWORD code) {
    last_error = code;
}
