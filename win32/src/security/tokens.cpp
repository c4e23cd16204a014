// Tokens of the process and of its threads. A thread can impersonate only its own user, so its
// token differs from the process's token in its level only.
#include <windows.h>

#include <unistd.h>

#include <cstddef>
#include <iterator>

#include "base/os_error.h"
#include "security/accounts.h"
#include "security/security_id.h"
#include "security/token.h"

namespace host {
namespace {

thread_local int impersonation_level = kPrimaryToken;

constexpr SecurityId kEveryone{{SECURITY_WORLD_SID_AUTHORITY}, {SECURITY_WORLD_RID}};
constexpr SecurityId kUsers{{SECURITY_NT_AUTHORITY},
                            {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_USERS}};
constexpr SecurityId kAdministrators{{SECURITY_NT_AUTHORITY},
                                     {SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS}};

constexpr DWORD kMember = SE_GROUP_MANDATORY | SE_GROUP_ENABLED_BY_DEFAULT | SE_GROUP_ENABLED;

struct Group {
    const SecurityId* sid;
    DWORD attributes;
};

// The groups in a row, then their identifiers.
struct GroupList {
    DWORD count;
    SID_AND_ATTRIBUTES groups[3];
    SecurityId sids[3];
};
static_assert(offsetof(GroupList, groups) == offsetof(TOKEN_GROUPS, Groups));

void Fill(GroupList& list, const Token& token) {
    // An administrator who is not root has the group for denials only, as on Windows before
    // elevation.
    const Group rows[] = {
        {&kEveryone, kMember},
        {&kUsers, kMember},
        {&kAdministrators,
         token.User() == 0 ? kMember | SE_GROUP_OWNER : DWORD{SE_GROUP_USE_FOR_DENY_ONLY}}};
    list.count = token.IsAdministrator() ? 3 : 2;
    for (DWORD i = 0; i < std::size(rows); ++i) {
        list.sids[i] = *rows[i].sid;
        list.groups[i] = {&list.sids[i], rows[i].attributes};
    }
}

BOOL Open(DWORD access, int level, LPHANDLE token) {
    if (token == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    const HANDLE opened = OpenHandle(std::make_unique<Token>(access, level));
    if (opened == nullptr) return FALSE;
    *token = opened;
    return TRUE;
}

}  // namespace

Token::Token(DWORD access, int level)
    : HandleObject(kKind),
      access_(access),
      level_(level),
      user_(geteuid()),
      is_administrator_(host::IsAdministrator()) {}

}  // namespace host

using namespace host;

BOOL OpenProcessToken(HANDLE process, DWORD access, LPHANDLE token) {
    if (process != GetCurrentProcess()) return Fail(ERROR_INVALID_HANDLE);
    return Open(access, kPrimaryToken, token);
}

BOOL OpenThreadToken(HANDLE thread, DWORD access, BOOL /*as_self*/, LPHANDLE token) {
    if (thread != GetCurrentThread()) return Fail(ERROR_INVALID_HANDLE);
    if (impersonation_level == kPrimaryToken) return Fail(ERROR_NO_TOKEN);
    if (impersonation_level == SecurityAnonymous) return Fail(ERROR_CANT_OPEN_ANONYMOUS);
    return Open(access, impersonation_level, token);
}

BOOL GetTokenInformation(HANDLE handle, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD bytes,
                         LPDWORD needed) {
    const HandlePin<Token> token(handle);
    if (!token) return FALSE;
    if (needed == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    if (kind != TokenGroups) return Fail(ERROR_NOT_SUPPORTED);
    if (!token->May(TOKEN_QUERY)) return Fail(ERROR_ACCESS_DENIED);
    *needed = sizeof(GroupList);
    if (buffer == nullptr || bytes < sizeof(GroupList)) return Fail(ERROR_INSUFFICIENT_BUFFER);
    Fill(*static_cast<GroupList*>(buffer), *token);
    return TRUE;
}

BOOL ImpersonateSelf(SECURITY_IMPERSONATION_LEVEL level) {
    if (level < SecurityAnonymous || level > SecurityDelegation) {
        return Fail(ERROR_BAD_IMPERSONATION_LEVEL);
    }
    impersonation_level = level;
    return TRUE;
}

BOOL RevertToSelf() {
    impersonation_level = kPrimaryToken;
    return TRUE;
}
