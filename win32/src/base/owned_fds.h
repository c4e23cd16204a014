// The descriptors that this process has opened for the host, so that a child of fork can close what
// it inherited.
#pragma once

#include <vector>

namespace host {

// Descriptors from 2^20 on are not noted: a child keeps those.
void NoteFd(int fd);
void ForgetFd(int fd);

// In the child: returns all descriptors of its parent's host, and forgets them.
std::vector<int> TakeInheritedFds();

}  // namespace host
