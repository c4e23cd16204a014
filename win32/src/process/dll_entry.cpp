// The loader's duty on this host: DllMain of the module that this file is linked into runs on load
// and unload.
//
// Link it as the module's last source: the attach then follows the construction of the module's own
// objects. The detach comes before their destruction when the module is unloaded; at process exit
// it comes after every object with a destructor, the module's and the program's, so that a
// program's last object can still call the module. What DllMain uses on detach must therefore have
// no destructor that the C run-time knows of; nothing in the host layer has one. DllMain's result
// is not looked at.
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
