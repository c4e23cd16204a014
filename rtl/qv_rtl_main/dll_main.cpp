// Load and unload of the library.
#include <windows.h>

#include "driver_global/startup.h"
#include "mox_classes/memory/module_static.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sysutils_platform.h"

namespace {

// The loader must see no exception; whatever a step could not do, the library stays usable.
template <class Step>
void NoThrow(const Step& step) {
    try {
        step();
    } catch (...) {
        OutputDebugStringW(TEXT("[##qv_rtl::DllMain] a step failed"));
    }
}

}  // namespace

extern "C" QV_API BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        OutputDebugStringW(TEXT("[##qv_rtl::DllMain] DLL_PROCESS_ATTACH Entered"));
        NoThrow([] {
            QVInitApp(TEXT("qv_rtl"), UnicodeString(), UnicodeString());
            Mox::LogHere(' ',
                         UnicodeString(TEXT("[qv_rtl] ExeName: ")) + Sysutils::ExeName(nullptr));
        });
    } else if (reason == DLL_PROCESS_DETACH) {
        // The name is not used; making it could fail, and the unit's end with it.
        NoThrow([] { QVUninitApp(UnicodeString()); });
        OutputDebugStringW(TEXT("[##qv_rtl::DllMain] DLL_PROCESS_DETACH Leaved"));
        System::ReleaseModuleStatics();
    }
    return TRUE;
}
