#include "security/security_id.h"

#include <cstring>
#include <new>

#include "base/os_error.h"

using namespace host;

namespace {

bool IsValid(const SecurityId* sid) {
    return sid != nullptr && sid->revision == kSidRevision && sid->count <= kMaxSubAuthorities;
}

}  // namespace

BOOL AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD a, DWORD b,
                              DWORD c, DWORD d, DWORD e, DWORD f, DWORD g, DWORD h, PSID* sid) {
    if (count > kMaxSubAuthorities) return Fail(ERROR_INVALID_SID);
    if (authority == nullptr || sid == nullptr) return Fail(ERROR_INVALID_PARAMETER);
    void* const block = HeapAlloc(GetProcessHeap(), 0, sizeof(SecurityId));
    if (block == nullptr) return FALSE;
    auto* const made = new (block) SecurityId(*authority, {a, b, c, d, e, f, g, h});
    made->count = count;
    *sid = made;
    return TRUE;
}

PVOID FreeSid(PSID sid) {
    HeapFree(GetProcessHeap(), 0, sid);
    return nullptr;
}

BOOL EqualSid(PSID a, PSID b) {
    const auto* const left = static_cast<const SecurityId*>(a);
    const auto* const right = static_cast<const SecurityId*>(b);
    if (!IsValid(left) || !IsValid(right)) return Fail(ERROR_INVALID_SID);
    const std::size_t bytes = offsetof(SecurityId, parts) + left->count * sizeof(DWORD);
    return left->count == right->count && std::memcmp(left, right, bytes) == 0;
}
