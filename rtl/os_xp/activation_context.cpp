#include "os_xp/activation_context.h"

#include "mox_classes/text/log_here.h"
#include "mox_classes/text/sys_error.h"
#include "os_xp/loaded_module.h"

static_assert(sizeof(ACTCTXW) == 56);

namespace {

using TCreate = HANDLE(WINAPI*)(const ACTCTXW* context);
using TGetCurrent = BOOL(WINAPI*)(HANDLE* context);
using TRelease = void(WINAPI*)(HANDLE context);

constexpr WORD kManifest = 1;

UnicodeString LastErrorText() {
    return Mox::GetSysError(GetLastError(), true);
}

HANDLE FromManifest(TCreate create, const UnicodeString& module) {
    ACTCTXW context{};
    context.cbSize = sizeof(context);
    context.dwFlags = ACTCTX_FLAG_RESOURCE_NAME_VALID;
    context.lpSource = module.t_str();
    context.lpResourceName = MAKEINTRESOURCEW(kManifest);
    // cppcheck-suppress returnDanglingLifetime ; a handle, not the description
    return create(&context);
}

HANDLE CurrentContext(TGetCurrent get_current) {
    HANDLE context = INVALID_HANDLE_VALUE;
    if (get_current == nullptr) {
        Mox::LogHere('X', TEXT("\t_GetCurrentActCtx is null"));
    } else if (!get_current(&context)) {
        Mox::LogHere(
            'X', UnicodeString().sprintf(TEXT("\tGetCurrentActCtx() failed: %s"), LastErrorText()));
        context = INVALID_HANDLE_VALUE;
    }
    return context;
}

}  // namespace

HANDLE CreateActiveContext(UnicodeString module) {
    const os_xp::TModule kernel(LoadLibraryW(TEXT("kernel32.dll")));
    const auto get_current = os_xp::FindEntry<TGetCurrent>(kernel.Get(), "GetCurrentActCtx");
    const auto create = os_xp::FindEntry<TCreate>(kernel.Get(), "CreateActCtxW");
    if (create == nullptr) {
        Mox::LogHere('*',
                     TEXT("\t_CreateActCtx is NULL. This system does not support Windows Theme "
                          "System"));
        return INVALID_HANDLE_VALUE;
    }
    HANDLE context = FromManifest(create, module);
    if (context != INVALID_HANDLE_VALUE) return context;
    Mox::LogHere('X',
                 UnicodeString().sprintf(TEXT("\tCreateActCtx() failed: %s"), LastErrorText()));
    context = CurrentContext(get_current);
    if (context == INVALID_HANDLE_VALUE) Mox::LogHere('X', TEXT("\tInvalid ActCtx handle"));
    return context;
}

void ReleaseActiveContext(HANDLE context) {
    const os_xp::TModule kernel(LoadLibraryW(TEXT("kernel32.dll")));
    const auto release = os_xp::FindEntry<TRelease>(kernel.Get(), "ReleaseActCtx");
    if (release == nullptr) {
        Mox::LogHere('*', TEXT("_ReleaseActCtx is NULL. This system does not support Windows Theme "
                               "System"));
        return;
    }
    release(context);
}
