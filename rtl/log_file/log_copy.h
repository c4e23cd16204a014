// A copy of a log file that other processes may be writing.
#pragma once

#include <cstdint>
#include <vector>

#include "mox_classes/unicode_string.h"

namespace Mox {

// Copies the file as far as its own limit goes; of a file that is no log only the header. The
// result is empty, or says what went wrong.
UnicodeString CopyLogFile(const UnicodeString& fileName, std::vector<std::uint8_t>& bytes);

}  // namespace Mox
