// The descriptors that this process has opened for the host, so that a child of fork can close what
// it inherited.
#pragma once

#include <vector>

namespace host {

// Descriptors from 2^20 on are not noted: a child keeps those.
void NoteFd(int fd);
void ForgetFd(int fd);

// In the child: all descriptors of its parent's host. They count as not noted afterwards.
std::vector<int> TakeInheritedFds();

}  // namespace host
