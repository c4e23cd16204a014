// The bytes of a security identifier.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>

namespace host {

inline constexpr BYTE kSidRevision = 1;
inline constexpr std::size_t kMaxSubAuthorities = 8;

// A security identifier as callers see its bytes. It has room for the longest one that this host
// makes; a shorter one ends behind part `count`.
struct SecurityId {
    SecurityId() = default;
    constexpr SecurityId(SID_IDENTIFIER_AUTHORITY of, std::initializer_list<DWORD> list)
        : revision(kSidRevision), count(static_cast<BYTE>(list.size())), authority(of) {
        std::copy(list.begin(), list.end(), parts);
    }

    BYTE revision = 0;
    BYTE count = 0;
    SID_IDENTIFIER_AUTHORITY authority = {};
    DWORD parts[kMaxSubAuthorities] = {};
};
static_assert(offsetof(SecurityId, parts) == 8);

}  // namespace host
