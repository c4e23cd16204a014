// The folders below "run", where the processes of one host root meet. Only this user can open them.
#pragma once

#include "base/unique_fd.h"

namespace host {

// The folder run/<name> of the host root, made when it is missing. Empty, with errno, on failure.
UniqueFd OpenRuntimeDirectory(const char* name);

// Waits until nobody else holds the lock of the folder. The lock ends with the descriptor, also
// when the process is killed. Empty, with errno, on failure.
UniqueFd LockRuntimeDirectory(int folder);

}  // namespace host
