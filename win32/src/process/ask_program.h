// Programs that are asked something: arguments in, one line out.
#pragma once

#include <string>
#include <vector>

namespace host {

struct ProgramAnswer {
    bool accepted = false;  // it ended with exit code 0
    std::string line;       // the first line of its output, without the line break
};

// Starts the program (a path, or a name that PATH leads to; never through a shell) and waits for
// its end. Its standard input is empty. Of its first line at most 64 KiB count; a longer one is
// not accepted.
[[nodiscard]] ProgramAnswer AskProgram(const std::string& program,
                                       const std::vector<std::string>& arguments);

}  // namespace host
