// The blocks of the process heap.
//
// Builds for speed take them from a small-block allocator (QV_SMALL_BLOCKS): an XML tree is a
// million blocks of 16 to 64 bytes, and a string that grows by one character asks for another size
// each time. Parsing the answer for 20 printers takes 110 us instead of 175 us, and a tree takes a
// sixth less memory. All other builds take the blocks from the C library, because the sanitizers
// watch those one by one.
#pragma once

#include <cstddef>
#include <cstdlib>

#ifdef QV_SMALL_BLOCKS
#include <mimalloc.h>

#include <algorithm>
#endif

// A request for 0 bytes gives a normal block.
namespace host {

#ifdef QV_SMALL_BLOCKS

// A block of this size or more that grows gets the same size again as spare room. A stream that
// grows in steps is then moved only a few times. Memory that nobody touches costs only addresses.
constexpr std::size_t kRoomFrom = std::size_t{1} << 16;

// Such a block stays where it is until less than this part of it is used. The allocator alone would
// move a block that is used less than half, and the spare room would be lost at the next step.
constexpr std::size_t kLeastPart = 4;

// Keeps freed pages for two seconds instead of 25 ms. Otherwise a process that waits longer for the
// processor would get its pages anew for each piece of work. That costs half of the time of
// converting 1 MB of text.
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
    // The allocator would give the same answer, but with one more call.
    if (size <= usable && usable / 2 <= size) return block;
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
