// The token that says who the calling thread acts for.
#pragma once

#include <windows.h>

#include "mox_classes/memory/handles.h"

namespace os_xp {

// The thread's own token, or the process's when the thread has none. None, with the reason in the
// last error, when neither can be opened.
inline System::TKernelHandle OpenThreadOrProcessToken(DWORD access) {
    System::TKernelHandle token;
    if (!OpenThreadToken(GetCurrentThread(), access, TRUE, token.Receive()) &&
        GetLastError() == ERROR_NO_TOKEN) {
        OpenProcessToken(GetCurrentProcess(), access, token.Receive());
    }
    return token;
}

}  // namespace os_xp
