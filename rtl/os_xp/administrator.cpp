#include "os_xp/administrator.h"

#include <windows.h>

#include <winsvc.h>

#include <algorithm>

#include "mox_classes/memory/handles.h"
#include "os_xp/thread_token.h"

namespace {

// The SID of the built-in Administrators group. It is made for each use.
struct TSidPolicy {
    using Handle = PSID;
    static Handle None() { return nullptr; }
    static void Close(Handle sid) { FreeSid(sid); }
};
using TSid = System::TOwner<TSidPolicy>;

TSid AdministratorsGroup() {
    SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
    TSid group;
    if (!AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID,
                                  DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0, group.Receive())) {
        return TSid();
    }
    return group;
}

struct TServicePolicy {
    using Handle = SC_HANDLE;
    static Handle None() { return nullptr; }
    static void Close(Handle service) { CloseServiceHandle(service); }
};

}  // namespace

bool IsAdmin() {
    alignas(TOKEN_GROUPS) BYTE buffer[1024] = {};
    DWORD needed = 0;
    {
        const System::TKernelHandle token = os_xp::OpenThreadOrProcessToken(TOKEN_QUERY);
        if (!token ||
            !GetTokenInformation(token.Get(), TokenGroups, buffer, sizeof(buffer), &needed)) {
            return false;
        }
    }
    const TSid administrators = AdministratorsGroup();
    if (!administrators) return false;
    const auto* list = reinterpret_cast<const TOKEN_GROUPS*>(buffer);
    return std::any_of(list->Groups, list->Groups + list->GroupCount,
                       [&](const SID_AND_ATTRIBUTES& group) {
                           return EqualSid(group.Sid, administrators.Get()) != FALSE;
                       });
}

bool IsAdmin2() {
    constexpr DWORD kEverything = GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE;
    const System::TOwner<TServicePolicy> manager(OpenSCManagerW(nullptr, nullptr, kEverything));
    return static_cast<bool>(manager);
}
