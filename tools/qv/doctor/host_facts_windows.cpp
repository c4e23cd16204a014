#include <windows.h>

#include "console.h"
#include "doctor/examination.h"

namespace qv {

HostFacts GetHostFacts() {
    HostFacts facts;
    WCHAR text[MAX_PATH * 4] = {};
    constexpr DWORD kRoom = MAX_PATH * 4;
    const DWORD length = GetModuleFileNameW(GetModuleHandleW(L"qv_rtl.dll"), text, kRoom);
    if (length > 0 && length < kRoom) facts.library = ToUtf8(UnicodeString(text));
    DWORD size = kRoom;
    if (GetComputerNameW(text, &size)) facts.machine = ToUtf8(UnicodeString(text));
    return facts;
}

}  // namespace qv
