// Memory of the process heap: what strings and record holders keep their blocks in, so that one
// module may free what another allocated.
#pragma once

#include "qv_api.h"

namespace System {

// Sizes are bytes. Both give null when the heap cannot serve the size or it is negative; a failed
// ReallocMemory leaves the block as it was, a successful one may move it. A null block is
// allocated.
QV_API void* GetMemory(int size);
QV_API void* ReallocMemory(void* block, int size);
// The platform's success flag; null is freed successfully.
QV_API int FreeMemory(void* block);
// Copies `count` bytes, overlapping or not; nothing when `count` is below 1.
QV_API void Move(const void* source, void* dest, int count);

}  // namespace System
