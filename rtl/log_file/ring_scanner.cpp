#include "log_file/ring_scanner.h"

#include <algorithm>
#include <cstring>

namespace Mox {

void TRingScanner::Scan(std::uint32_t from, std::uint32_t end) {
    bool behind_slot = false;  // the last slot ends where the scanner looks
    while (from < end) {
        const std::uint32_t slot_end = SlotEnd(from, end);
        if (slot_end == 0) {
            from = SkipDamage(from, end, behind_slot);
        } else {
            slots.push_back({from, slot_end});
            from = slot_end;
        }
        behind_slot = slot_end != 0;
    }
}

std::uint32_t TRingScanner::SlotEnd(std::uint32_t offset, std::uint32_t end) const {
    const auto stop = static_cast<std::uint32_t>(std::min<std::size_t>(end, bytes_.size()));
    if (offset >= stop) return 0;
    return CredibleSlotEnd(offset, bytes_.subspan(offset, stop - offset), stop);
}

TLogRecordFixed TRingScanner::FixedOf(const TLogSlot& slot) const {
    const std::uint32_t width = bytes_[slot.offset + kLinkSize] & kTagWidth;
    TLogRecordFixed fixed{};
    std::memcpy(&fixed, bytes_.data() + slot.offset + kLinkSize + 1 + width, sizeof(fixed));
    return fixed;
}

// Nearly every place is refused by its tag.
std::uint32_t TRingScanner::NextSlot(std::uint32_t from, std::uint32_t stop,
                                     std::uint32_t end) const {
    for (std::size_t at = from; at < stop && at + kSmallestSlot <= bytes_.size(); ++at) {
        const bool may_begin = (bytes_[at + kLinkSize] & kTagKind) == kRecordTag;
        const auto offset = static_cast<std::uint32_t>(at);
        if (may_begin && SlotEnd(offset, end) != 0) return offset;
    }
    return stop;
}

// A write position that lied made a writer put its record into the newest slot: the record begins
// in that slot and ends behind it.
std::uint32_t TRingScanner::SlotInside(const TLogSlot& slot, std::uint32_t end) const {
    for (std::uint32_t at = slot.offset + 1; at < slot.end; ++at) {
        if (SlotEnd(at, end) > slot.end) return at;
    }
    return 0;
}

// Returns where the scan goes on.
std::uint32_t TRingScanner::SkipDamage(std::uint32_t at, std::uint32_t end, bool behind_slot) {
    const std::uint32_t inside = behind_slot ? SlotInside(slots.back(), end) : 0;
    if (inside != 0) {
        const TLogSlot overwritten = slots.back();
        slots.pop_back();
        gaps.push_back({slots.size(), overwritten.offset, inside,
                        TEXT("a record begins inside the one before it")});
        return inside;
    }
    const std::uint32_t next = NextSlot(at, end, end);
    gaps.push_back({slots.size(), at, next,
                    at >= bytes_.size() ? TEXT("the file ends before its ring does")
                                        : TEXT("no credible record begins here")});
    return next;
}

}  // namespace Mox
