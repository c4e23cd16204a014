// The loader's duty on this host: DllMain of the module that this file is linked into runs on load
// and unload.
#include <windows.h>

#include <cstdlib>

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

namespace {

HINSTANCE OwnModule() {
    static char anchor;
    return reinterpret_cast<HINSTANCE>(&anchor);
}

__attribute__((constructor)) void Attach() {
    DllMain(OwnModule(), DLL_PROCESS_ATTACH, nullptr);
}
__attribute__((destructor)) void Detach() {
    DllMain(OwnModule(), DLL_PROCESS_DETACH, nullptr);
}

}  // namespace
