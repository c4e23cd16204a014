// qv log stat: what a log holds, in numbers.
#pragma once

#include <string>

namespace qv {

// Throws Failure, kDamaged when the numbers are those of what can be read.
void ShowLogStat(const std::string& file, bool json);

}  // namespace qv
