// qv log write: lines of text as records of the log in force.
#pragma once

#include <string>
#include <vector>

namespace qv {

struct WriteOptions {
    std::string level = "information", source = "qv";
    std::vector<std::string> words;  // none, or "-": the lines of standard input
};

// Throws Failure: kCannotOpen when there is no log to write to, kDamaged when all lines are written
// but some had to be cut.
void WriteLog(const WriteOptions& options);

}  // namespace qv
