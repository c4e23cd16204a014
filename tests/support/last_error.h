// What a call that may fail leaves behind.
#pragma once

#include <windows.h>

namespace test {

/// 0 after a call that worked, else the last error.
inline DWORD ErrorUnless(bool worked) {
    return worked ? DWORD{NO_ERROR} : GetLastError();
}

}  // namespace test
