// Which records a log file holds, oldest first, whatever its header says.
#pragma once

#include <cstddef>
#include <vector>

#include "log_file/ring_scanner.h"

namespace Mox {

struct TFoundRing {
    std::vector<TLogSlot> slots;  // oldest first
    std::vector<TRingGap> gaps;
    // Slots from here on stand at the front of the file, behind the last wrap; those before it
    // stand in the tail. Without a wrap all stand at the front.
    std::size_t front = 0;
    // So many at the start are left behind the wrap offset: no ring can hold them.
    std::size_t behind_wrap = 0;
    // The header's positions lead to all of this. Otherwise they were not believed, and these are
    // all credible slots of the file: also some that the ring had given up.
    bool by_header = false;
};

// The header's positions are believed when it is plausible and what it names is there, save for
// gaps that can have held the records that are missing. Time in proportion to `file`.
TFoundRing FindRing(const TLogFileHeader& header, TLogBytes file);

}  // namespace Mox
