#include "mox_classes/memory.h"

#include <windows.h>

#include <cstring>

namespace System {

void* GetMemory(int size) {
    return size < 0 ? nullptr : HeapAlloc(GetProcessHeap(), 0, static_cast<SIZE_T>(size));
}

void* ReallocMemory(void* block, int size) {
    if (block == nullptr) return GetMemory(size);
    return size < 0 ? nullptr : HeapReAlloc(GetProcessHeap(), 0, block, static_cast<SIZE_T>(size));
}

int FreeMemory(void* block) {
    return block == nullptr ? TRUE : HeapFree(GetProcessHeap(), 0, block);
}

void Move(const void* source, void* dest, int count) {
    if (count >= 1 && source != dest) std::memmove(dest, source, static_cast<std::size_t>(count));
}

}  // namespace System
