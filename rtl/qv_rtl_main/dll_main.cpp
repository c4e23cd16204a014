// Load and unload of the library.
#include <windows.h>

#include "driver_global/startup.h"
#include "mox_classes/memory/module_static.h"
#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sysutils_platform.h"

namespace {

// No exception may reach the loader. The library stays usable when a step fails.
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
        // An empty name is passed, because QVUninitApp does not use it, and making a string could
        // fail.
        NoThrow([] { QVUninitApp(UnicodeString()); });
        OutputDebugStringW(TEXT("[##qv_rtl::DllMain] DLL_PROCESS_DETACH Leaved"));
        System::ReleaseModuleStatics();
    }
    return TRUE;
}
