// Named blocks of memory that processes of one user share, one set of names per host root.
//
// A block is a POSIX shared-memory object. Each handle holds a read lock (open file description
// lock) on its first byte. The last handle that closes removes the name; views keep the memory
// without a name. When the last holder was killed, the name stays without a holder: the next user
// of the name notices this, and starts with a block of zeros.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "base/unique_fd.h"

namespace host {

// The object's name for a mapping name under this host root.
std::string SharedBlockName(std::u16string_view name);

// Opens the block, or makes one of `size` bytes of zeros, all of them backed by memory. `existed`
// tells which; an existing block keeps its size. Win32 code.
DWORD OpenSharedBlock(const std::string& name, std::uint64_t size, UniqueFd& fd, bool& existed);

// In the child of a fork: its own descriptor and lock of the block that the parent has open as
// `fd`. Empty on failure.
UniqueFd SharedBlockOfChild(int fd);

// Closes a block that OpenSharedBlock gave. Removes the name unless another user holds the block.
void ReleaseSharedBlock(const std::string& name, UniqueFd held);

}  // namespace host
