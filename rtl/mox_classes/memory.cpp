#include "mox_classes/memory.h"

#include <windows.h>

#include <cstring>

namespace System {

namespace {

// Asked for once: every block of every string passes here. Written out in each caller, which saves
// a call per block.
[[gnu::always_inline]] inline HANDLE Heap() {
    static const HANDLE heap = GetProcessHeap();
    return heap;
}

}  // namespace

void* GetMemory(int size) {
    return size < 0 ? nullptr : HeapAlloc(Heap(), 0, static_cast<SIZE_T>(size));
}

void* ReallocMemory(void* block, int size) {
    if (block == nullptr) return GetMemory(size);
    return size < 0 ? nullptr : HeapReAlloc(Heap(), 0, block, static_cast<SIZE_T>(size));
}

int FreeMemory(void* block) {
    return block == nullptr ? TRUE : HeapFree(Heap(), 0, block);
}

void Move(const void* source, void* dest, int count) {
    if (count >= 1 && source != dest) std::memmove(dest, source, static_cast<std::size_t>(count));
}

}  // namespace System
