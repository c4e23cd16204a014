#include <windows.h>

#include "support/wine_gap.h"

namespace test {

bool UnderWine() {
    return GetProcAddress(GetModuleHandleW(TEXT("ntdll.dll")), "wine_get_version") != nullptr;
}

}  // namespace test
