#include "os_xp/message_filter.h"

#include <atomic>

#include "os_xp/loaded_module.h"

namespace {

using TChangeFilter = BOOL(WINAPI*)(UINT message, DWORD flag);

// The reference to user32 between Begin and End.
constinit std::atomic<HMODULE> kept_module{nullptr};

HMODULE KeptModule() {
    HMODULE kept = kept_module.load();
    if (kept != nullptr) return kept;
    os_xp::TModule loaded(LoadLibraryW(TEXT("USER32.DLL")));
    // When two threads load the module at the same time, only one reference is kept.
    if (kept_module.compare_exchange_strong(kept, loaded.Get())) return loaded.Release();
    return kept;
}

}  // namespace

void* BeginMessageFilter() {
    return os_xp::FindEntry<void*>(KeptModule(), "ChangeWindowMessageFilter");
}

int ChangeMessageFilter(void* filterFunction, UINT message, DWORD flag) {
    if (filterFunction == nullptr) return FALSE;
    return reinterpret_cast<TChangeFilter>(filterFunction)(message, flag);
}

void EndMessageFilter() {
    const HMODULE kept = kept_module.exchange(nullptr);
    if (kept != nullptr) FreeLibrary(kept);
}
