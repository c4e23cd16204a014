#include "log_file/log_ring.h"

#include <cstring>

namespace Mox {

namespace {

bool IsNumberWidth(unsigned width) {
    return width == 1 || width == 2 || width == 4;
}

std::uint32_t NumberAt(TLogBytes bytes, std::size_t at, unsigned width) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.data() + at, width);
    return number;
}

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

std::uint64_t LogRecordSize(TLogBytes bytes) {
    if (bytes.empty() || (bytes[0] & kTagKind) != kRecordTag) return 0;
    const unsigned width = bytes[0] & kTagWidth;
    if (!IsNumberWidth(width) || bytes.size() < 1 + width) return 0;
    return std::uint64_t{1} + width + kRecordFixedSize + NumberAt(bytes, 1, width);
}

std::uint32_t CredibleSlotEnd(std::uint32_t offset, TLogBytes head, std::uint32_t end) {
    if (head.size() < kLinkSize) return 0;
    const std::uint32_t link = NumberAt(head, 0, kLinkSize);
    const std::uint64_t size = LogRecordSize(head.subspan(kLinkSize));
    const bool credible = size != 0 && link == offset + kLinkSize + size && link <= end;
    return credible ? link : 0;
}

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
