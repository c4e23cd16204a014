#include "mox_log/wow64.h"

namespace {

using TIsWow64Process = BOOL(WINAPI*)(HANDLE process, BOOL* wow64);
using TSwitchRedirection = BOOL(WINAPI*)(BYTE enable);
using TDisableRedirection = BOOL(WINAPI*)(void** old_value);
using TRevertRedirection = BOOL(WINAPI*)(void* old_value);

// An entry point that only some systems have; null where it is missing.
template <class Entry>
Entry Find(const char* name) {
    const HMODULE kernel = GetModuleHandleW(TEXT("kernel32"));
    if (kernel == nullptr) return nullptr;
    return reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(kernel, name)));
}

// Looked for by a 32-bit process on a 64-bit system only.
struct TWow64Entries {
    TSwitchRedirection enable = Find<TSwitchRedirection>("Wow64EnableWow64FsRedirection");
    TDisableRedirection disable = Find<TDisableRedirection>("Wow64DisableWow64FsRedirection");
    TRevertRedirection revert = Find<TRevertRedirection>("Wow64RevertWow64FsRedirection");
};

const TWow64Entries& Entries() {
    static const TWow64Entries entries;
    return entries;
}

bool AskWow64() {
    BOOL wow64 = FALSE;
    const auto ask = Find<TIsWow64Process>("IsWow64Process");
    return ask != nullptr && ask(GetCurrentProcess(), &wow64) && wow64 != FALSE;
}

}  // namespace

bool IsWow64() {
    static const bool wow64 = AskWow64();
    return wow64;
}

DWORD SAM64(DWORD access) {
    return IsWow64() ? access | KEY_WOW64_64KEY : access;
}

bool DisableWow64FsRedirection(void** oldValue) {
    if (!IsWow64()) return true;
    const auto disable = Entries().disable;
    return disable != nullptr && disable(oldValue) != FALSE;
}

bool RevertWow64FsRedirection(void* oldValue) {
    if (!IsWow64()) return true;
    const auto revert = Entries().revert;
    return revert != nullptr && revert(oldValue) != FALSE;
}

bool EnableWow64FsRedirection(void** /*oldValue*/) {
    if (!IsWow64()) return true;
    const auto enable = Entries().enable;
    return enable != nullptr && enable(TRUE) != FALSE;
}
