// Starts programs of this host, without a shell.
#pragma once

#include <string>
#include <vector>

namespace host {

// Runs `arguments[0]`, an absolute path, in `folder` (empty: the current one) and does not wait for
// its end. The program inherits the environment and the streams 0, 1 and 2, no other descriptor. It
// never becomes a zombie. Returns 0 or an errno, also when chdir or exec fails in the child.
int StartProgram(const std::vector<std::string>& arguments, const std::string& folder);

}  // namespace host
