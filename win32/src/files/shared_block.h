// Named blocks of memory that processes of one user share, one set of names per host root.
//
// A block is a POSIX shared-memory object. Everybody who has it open holds a read lock (open file
// description lock) on its first byte. The last one to let go removes the name; views that outlive
// it keep their memory without a name. When the last holder was killed, the name stays behind
// without a holder: whoever asks for it next finds that out and starts with a block of zeros.
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

// In the child of a fork: a hold of its own on the block that the parent has open as `fd`. Empty
// when that cannot be had.
UniqueFd SharedBlockOfChild(int fd);

// Lets go of a block that OpenSharedBlock gave; removes the name unless somebody else holds it.
void ReleaseSharedBlock(const std::string& name, UniqueFd held);

}  // namespace host
