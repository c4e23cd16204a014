// How the ring of a damaged log file is mended. Works on bytes only: the writer of the ring reads
// the file, asks here what to do, and does it.
//
// Every record that a reader can show stays where it is. A gap between records becomes one record
// of level '>' that says how many bytes were lost, so that whoever follows the links comes by. The
// header is written last: a repair that is killed leaves the gaps that are not filled yet.
#pragma once

#include <cstdint>
#include <vector>

#include "log_file/log_format.h"
#include "log_file/log_ring.h"

namespace Mox {

enum class TLogState {
    Sound,
    Damaged,
    NothingLeft,  // a log of which no record is left
    NotOurs       // not empty, and nothing in it says that it is a log
};

struct TLogPatch {
    std::uint32_t offset = 0;
    std::vector<std::uint8_t> bytes;
};

struct TLogRepair {
    TLogState state = TLogState::Sound;
    TLogFileHeader header{};  // to be written behind the patches
    std::vector<TLogPatch> patches;
    std::uint32_t kept = 0;  // records
    std::uint64_t lost = 0;  // bytes in gaps
};

// Whether the limit of the header can be true, in a ring whose slots reach up to `used`, for a
// writer that was told `limit`.
bool IsLimitBelieved(const TLogFileHeader& header, std::uint32_t used, std::uint32_t limit);

// `header` is what the file says, or what the writer has made of it since; `limit` is the limit
// that the writer was told.
TLogRepair PlanRepair(const TLogFileHeader& header, TLogBytes file, std::uint32_t limit);

}  // namespace Mox
