// The window classes of this process.
#pragma once

#include <windows.h>

#include <atomic>
#include <memory>

#include "text/host_text.h"

namespace host {

struct WindowClass {
    WideString name;
    WNDPROC procedure;
    ATOM atom;
    std::atomic<int> windows{0};
};

// By name, case ignored, or by the atom that RegisterClassW gave; null when there is none.
std::shared_ptr<WindowClass> FindWindowClass(LPCWSTR name);

}  // namespace host
