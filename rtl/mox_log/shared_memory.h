// Named memory that several processes map.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace Mox {

// Scope of a shared-memory name. Every other value means the name as given.
enum TSharedDomain : int {
    sdShared = 0,
    sdProcess = 2,  // private to the calling process: its id stands in front of the name
};

// Creates or opens the block `name` of `size` bytes and maps it whole; null on failure, which is
// shown by ODSLog. `mapping` receives the handle and *lastError, when asked for, the code of the
// creation, also on success (ERROR_ALREADY_EXISTS tells an existing block). Free with
// FreeSharedMemory, also when only the mapping was made.
QV_API void* AllocSharedMemory(UnicodeString name, int size, void*& mapping, DWORD* lastError,
                               TSharedDomain domain);
// Unmaps the view and closes the mapping; both are always tried.
QV_API void FreeSharedMemory(void* mapping, void* view);

}  // namespace Mox
