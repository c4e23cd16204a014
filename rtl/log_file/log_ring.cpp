#include "log_file/log_ring.h"

#include <cstring>

namespace Mox {

namespace {

// Positions and count of a ring that is not empty.
bool IsRingPlausible(const TLogFileHeader& h) {
    if (h.write_position < kFirstSlot || h.write_position > h.limit || h.oldest < kFirstSlot) {
        return false;
    }
    std::uint64_t used = 0;
    if (h.wrap == 0) {
        if (h.oldest >= h.write_position) return false;
        used = h.write_position - h.oldest;
    } else {
        if (h.oldest < h.write_position || h.oldest > h.wrap || h.wrap > h.limit) return false;
        used = std::uint64_t{h.wrap - h.oldest} + (h.write_position - kFirstSlot);
    }
    return std::uint64_t{h.count} * kSmallestSlot <= used;
}

}  // namespace

bool IsPlausible(const TLogFileHeader& header) {
    return header.version == TLogFileHeader::kVersion && header.limit >= kSmallestLimit &&
           (header.count == 0 || IsRingPlausible(header));
}

void EmptyRing(TLogFileHeader& header, std::uint32_t limit) {
    header.version = TLogFileHeader::kVersion;
    header.count = 0;
    header.limit = limit;
    header.write_position = kFirstSlot;
    header.oldest = kFirstSlot;
    header.wrap = 0;
    std::memset(header.reserved, 0, sizeof(header.reserved));
}

}  // namespace Mox
