// Copies of UTF-16 units that cost no call where there are few of them, as in most texts.
#pragma once

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace System {

// Copies as many units as one piece holds, up to twice as many, with two pieces that may overlap.
template <class Piece>
inline void CopyEnds(WCHAR* dest, const WCHAR* source, std::ptrdiff_t count) {
    const std::ptrdiff_t last = count - static_cast<std::ptrdiff_t>(sizeof(Piece) / sizeof(WCHAR));
    Piece head, tail;
    std::memcpy(&head, source, sizeof head);
    std::memcpy(&tail, source + last, sizeof tail);
    std::memcpy(dest, &head, sizeof head);
    std::memcpy(dest + last, &tail, sizeof tail);
}

// Copies `count` units; nothing when `count` is below 1. The two areas must not overlap.
inline void CopyUnits(WCHAR* dest, const WCHAR* source, std::ptrdiff_t count) {
    constexpr std::ptrdiff_t kFew = 16;
    if (count > kFew) {
        std::memcpy(dest, source, static_cast<std::size_t>(count) * sizeof(WCHAR));
    } else if (count >= 8) {
        CopyEnds<std::array<std::uint64_t, 2>>(dest, source, count);
    } else if (count >= 4) {
        CopyEnds<std::uint64_t>(dest, source, count);
    } else if (count >= 2) {
        CopyEnds<std::uint32_t>(dest, source, count);
    } else if (count == 1) {
        *dest = *source;
    }
}

}  // namespace System
