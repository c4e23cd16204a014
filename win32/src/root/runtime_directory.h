// Where processes of one host root meet: folders below "run", for this user alone.
#pragma once

#include "base/unique_fd.h"

namespace host {

// The folder run/<name> of the host root, made when it is missing. Empty, with errno, on failure.
UniqueFd OpenRuntimeDirectory(const char* name);

// Waits until no other holder has the lock of the folder; ends with the descriptor, also when the
// process is killed. Empty, with errno, on failure.
UniqueFd LockRuntimeDirectory(int folder);

}  // namespace host
