// Load and unload of the library.
#include <windows.h>

#include "mox_classes/module_static.h"

extern "C" QV_API BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_DETACH) System::ReleaseModuleStatics();
    return TRUE;
}
