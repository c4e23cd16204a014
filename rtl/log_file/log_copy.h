// A copy of a log file that other processes may be writing.
#pragma once

#include <cstdint>
#include <vector>

#include "log_file/log_place.h"
#include "mox_classes/text/unicode_string.h"

namespace Mox {

// As far as the ring's own limit goes, and of a file that is no log only the header; or everything,
// up to 256 MiB.
enum class TLogCopyExtent { Ring, WholeFile };

// The result is empty, or says what went wrong.
UnicodeString CopyLogFile(const UnicodeString& fileName, TLogCopyExtent extent,
                          std::vector<std::uint8_t>& bytes, TLogCopy& copy);

}  // namespace Mox
