// A log as it lies on a machine that has been used for a while.
#pragma once

#include <string>

namespace bench {

// Writes a log that has as many records as the product keeps, 5 MiB.
void WriteFullLog(const std::string& file);

}  // namespace bench
