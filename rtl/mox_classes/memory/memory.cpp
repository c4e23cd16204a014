#include "mox_classes/memory/memory.h"

#include <cstring>

#include "mox_classes/memory/process_heap.h"

namespace System {

constinit std::atomic<HANDLE> TProcessHeap::handle_{nullptr};

HANDLE TProcessHeap::Ask() {
    const HANDLE heap = GetProcessHeap();
    handle_.store(heap, std::memory_order_relaxed);
    return heap;
}

void* GetMemory(int size) {
    return TProcessHeap::New(size);
}

void* ReallocMemory(void* block, int size) {
    if (block == nullptr) return GetMemory(size);
    return size < 0 ? nullptr : TProcessHeap::Resized(block, size);
}

int FreeMemory(void* block) {
    return block == nullptr ? TRUE : TProcessHeap::Delete(block);
}

void Move(const void* source, void* dest, int count) {
    if (count >= 1 && source != dest) std::memmove(dest, source, static_cast<std::size_t>(count));
}

}  // namespace System
