// The process heap, and the global and local heaps that are the same one.
#include <windows.h>

#include <algorithm>

#include "base/heap_blocks.h"

namespace {

// Larger than any real block. A size that wrapped around is refused before the allocator sees it.
constexpr SIZE_T kLargestBlock = SIZE_T{1} << 39;

char process_heap;

bool IsServed(HANDLE heap, SIZE_T bytes) {
    return heap == &process_heap && bytes <= kLargestBlock;
}

// Refuses an allocation. Not inlined, so that the usual path stays short: every string takes it.
[[gnu::cold, gnu::noinline]] LPVOID Refuse(HANDLE heap) {
    SetLastError(heap == &process_heap ? ERROR_NOT_ENOUGH_MEMORY : ERROR_INVALID_HANDLE);
    return nullptr;
}

LPVOID Obtained(LPVOID block) {
    return block != nullptr ? block : Refuse(&process_heap);
}

[[gnu::noinline]] LPVOID Zeroed(SIZE_T bytes) {
    return Obtained(host::NewZeroedBlock(bytes));
}

}  // namespace

HANDLE GetProcessHeap() {
    [[maybe_unused]] static const bool once = (host::KeepFreedPages(), true);
    return &process_heap;
}

LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) {
    if (!IsServed(heap, bytes)) return Refuse(heap);
    if ((flags & HEAP_ZERO_MEMORY) != 0) return Zeroed(bytes);
    return Obtained(host::NewBlock(bytes));
}

LPVOID HeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T bytes) {
    if (!IsServed(heap, bytes)) return Refuse(heap);
    if (block == nullptr || flags != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return Obtained(host::ResizedBlock(block, std::max<SIZE_T>(bytes, 1)));
}

BOOL HeapFree(HANDLE heap, DWORD /*flags*/, LPVOID block) {
    if (!IsServed(heap, 0)) {
        Refuse(heap);
        return FALSE;
    }
    host::DeleteBlock(block);
    return TRUE;
}

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes) {
    if ((flags & ~static_cast<UINT>(GMEM_ZEROINIT)) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return HeapAlloc(&process_heap, (flags & GMEM_ZEROINIT) != 0 ? HEAP_ZERO_MEMORY : 0, bytes);
}

HGLOBAL GlobalFree(HGLOBAL block) {
    host::DeleteBlock(block);
    return nullptr;
}

HLOCAL LocalFree(HLOCAL block) {
    return GlobalFree(block);
}
