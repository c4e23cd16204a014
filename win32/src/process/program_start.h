// Starts programs of this host, without a shell.
#pragma once

#include <string>
#include <vector>

namespace host {

// Runs `arguments[0]`, an absolute path, in `folder` (empty: the current one) and does not wait for
// it. It inherits the environment and the streams 0, 1 and 2, no other descriptor; it is nobody's
// zombie. 0, or the errno of what failed, of chdir and exec too.
int StartProgram(const std::vector<std::string>& arguments, const std::string& folder);

}  // namespace host
