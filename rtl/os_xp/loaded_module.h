// A module of the system for the time that its optional entry points are needed.
#pragma once

#include <windows.h>

#include "mox_classes/memory/handles.h"

namespace os_xp {

struct TModulePolicy {
    using Handle = HMODULE;
    static Handle None() { return nullptr; }
    static void Close(Handle module) { FreeLibrary(module); }
};
using TModule = System::TOwner<TModulePolicy>;

// Null when the module is not there or does not have the name.
template <class Entry>
Entry FindEntry(HMODULE module, const char* name) {
    if (module == nullptr) return nullptr;
    return reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace os_xp
