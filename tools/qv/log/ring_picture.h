// The ring of a log file as one line of characters.
#pragma once

#include <string>
#include <vector>

#include "log_file/log_reader.h"

namespace qv {

// From the front of the file to its limit: '=' records, the older ones of a ring that has wrapped;
// '#' the newer ones; '>' where the next one comes; '.' free; '!' bytes that cannot be read.
std::string RingPicture(const Mox::TLogFileHeader& header, const std::vector<Mox::TLogSkip>& skips,
                        std::size_t width);

// Bytes that the records take.
std::uint64_t RingFill(const Mox::TLogFileHeader& header);

}  // namespace qv
