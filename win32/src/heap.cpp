// The process heap, and the global and local heaps that are the same one.
#include <windows.h>

#include <algorithm>

#include "heap_blocks.h"

namespace {

// More than any block that is meant; a size that wrapped around is refused before the allocator
// sees it.
constexpr SIZE_T kLargestBlock = SIZE_T{1} << 39;

char process_heap;

bool Refused(HANDLE heap, SIZE_T bytes) {
    const DWORD error = heap != &process_heap   ? ERROR_INVALID_HANDLE
                        : bytes > kLargestBlock ? ERROR_NOT_ENOUGH_MEMORY
                                                : NO_ERROR;
    if (error != NO_ERROR) SetLastError(error);
    return error != NO_ERROR;
}

LPVOID Obtained(LPVOID block) {
    if (block == nullptr) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return block;
}

}  // namespace

HANDLE GetProcessHeap() {
    [[maybe_unused]] static const bool once = (host::KeepFreedPages(), true);
    return &process_heap;
}

LPVOID HeapAlloc(HANDLE heap, DWORD flags, SIZE_T bytes) {
    if (Refused(heap, bytes)) return nullptr;
    const SIZE_T size = std::max<SIZE_T>(bytes, 1);
    return Obtained((flags & HEAP_ZERO_MEMORY) != 0 ? host::NewZeroedBlock(size)
                                                    : host::NewBlock(size));
}

LPVOID HeapReAlloc(HANDLE heap, DWORD flags, LPVOID block, SIZE_T bytes) {
    if (Refused(heap, bytes)) return nullptr;
    if (block == nullptr || flags != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return Obtained(host::ResizedBlock(block, std::max<SIZE_T>(bytes, 1)));
}

BOOL HeapFree(HANDLE heap, DWORD /*flags*/, LPVOID block) {
    if (Refused(heap, 0)) return FALSE;
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
