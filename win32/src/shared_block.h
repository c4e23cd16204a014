// Named blocks of memory that processes of one user share, one set of names per host root.
//
// A block is a POSIX shared-memory object. Everybody who has it open or mapped holds a read lock
// (open file description lock) on its first byte; a mapping keeps the lock after its descriptor is
// closed. The last one to let go removes the name. When the last holder was killed, the name stays
// behind without a holder: whoever asks for it next finds that out and starts with a block of
// zeros.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "unique_fd.h"

namespace host {

// The object's name for a mapping name under this host root.
std::string SharedBlockName(std::u16string_view name);

// Opens the block, or makes one of `size` bytes of zeros, all of them backed by memory. `existed`
// tells which; an existing block keeps its size. Win32 code.
DWORD OpenSharedBlock(const std::string& name, std::uint64_t size, UniqueFd& fd, bool& existed);

// Removes the name unless somebody holds the block. To be called after letting go of it.
void DropSharedBlock(const std::string& name);

}  // namespace host
