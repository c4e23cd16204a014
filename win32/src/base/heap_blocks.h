// Where the process heap's blocks come from. In builds for speed that is a small-block allocator
// (QV_SMALL_BLOCKS): an XML tree is a million blocks of 16 to 64 bytes, and a string that grows by
// one character asks for another size each time. Parsing the answer for 20 printers takes
// 110 us instead of 175 with the C library's blocks, and a tree a sixth less memory. All other
// builds, sanitizers among them, take the C library's, which checkers see one by one.
#pragma once

#include <cstddef>
#include <cstdlib>

#ifdef QV_SMALL_BLOCKS
#include <mimalloc.h>

#include <algorithm>
#endif

// A new block of no bytes is a block as any other.
namespace host {

#ifdef QV_SMALL_BLOCKS

// From this size on a block that grows gets as much again on top, so that a stream that grows in
// steps is moved a few times instead of every time. Memory that nobody touches is only an address.
constexpr std::size_t kRoomFrom = std::size_t{1} << 16;

// Such a block stays where it is down to this part of what it has. The allocator by itself moves a
// block that is used less than half, and rounds large ones up to half a megabyte: room would be
// taken away again by the next step, each time.
constexpr std::size_t kLeastPart = 4;

// Freed pages go back to the system after two seconds, not after 25 ms: a process that waits for
// its turn longer than that would fault in its memory anew for each piece of work (1 MB of text
// converted and dropped: half of the time).
inline void KeepFreedPages() {
    mi_option_set(mi_option_decommit_delay, 2000);
}

inline void* NewBlock(std::size_t size) {
    return mi_malloc(size);
}
inline void* NewZeroedBlock(std::size_t size) {
    return mi_zalloc(size);
}
inline void DeleteBlock(void* block) {
    mi_free(block);
}
inline void* ResizedBlock(void* block, std::size_t size) {
    const std::size_t usable = mi_usable_size(block);
    if (size < kRoomFrom) return mi_realloc(block, size);
    if (size <= usable) return usable / kLeastPart <= size ? block : mi_realloc(block, size);
    void* roomy = mi_realloc(block, size * 2);
    return roomy != nullptr ? roomy : mi_realloc(block, size);
}

#else

inline void KeepFreedPages() {}
inline void* NewBlock(std::size_t size) {
    return std::malloc(size);
}
inline void* NewZeroedBlock(std::size_t size) {
    return std::calloc(1, size);
}
inline void DeleteBlock(void* block) {
    std::free(block);
}
inline void* ResizedBlock(void* block, std::size_t size) {
    return std::realloc(block, size);
}

#endif

}  // namespace host
