// The window classes of this process.
#pragma once

#include <windows.h>

#include "text/host_text.h"

namespace host {

struct WindowClass {
    WideString name;
    WNDPROC procedure;
    ATOM atom;
};

// By name, case ignored, or by the atom that RegisterClassW gave; null when there is none. It
// stays as long as the process.
const WindowClass* FindWindowClass(LPCWSTR name);

}  // namespace host
