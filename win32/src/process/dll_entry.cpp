// Calls DllMain of the module that this file is linked into, when the module is loaded and
// unloaded.
//
// Link it as the module's last source: then the attach comes after the construction of the module's
// own objects. On unload the detach comes before their destruction. At process exit it comes after
// every object with a destructor, the module's and the program's, so that the program's last object
// can still call the module. So objects that DllMain uses on detach must have no destructor that
// the C run-time calls; the host layer has no such object. The result of DllMain is ignored.
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

// The start of this module's image, made by the linker.
extern "C" __attribute__((visibility("hidden"))) const char __ehdr_start;

namespace {

void CallDllMain(DWORD reason) {
    DllMain(reinterpret_cast<HINSTANCE>(const_cast<char*>(&__ehdr_start)), reason, nullptr);
}

__attribute__((constructor)) void Attach() {
    CallDllMain(DLL_PROCESS_ATTACH);
}
__attribute__((destructor)) void Detach() {
    CallDllMain(DLL_PROCESS_DETACH);
}

}  // namespace
