#include "log_file/log_walk.h"

#include <algorithm>
#include <cstring>

namespace Mox {

void TLogWalk::FollowRing(const TLogFileHeader& header) {
    if (header.count == 0) return;
    if (header.wrap != 0) {
        FollowRegion(header.oldest, header.wrap);
        FollowRegion(kFirstSlot, header.write_position);
    } else {
        FollowRegion(header.oldest, header.write_position);
    }
}

void TLogWalk::FollowRegion(std::uint32_t from, std::uint32_t end) {
    may_overlay_ = false;
    while (from < end) {
        const std::uint32_t slot_end = SlotEndAt(from, end);
        if (slot_end == 0) {
            from = SkipDamage(from, end);
        } else {
            slots_.push_back({from, slot_end});
            may_overlay_ = true;
            from = slot_end;
        }
    }
}

// The region may end behind the copy: a file that was cut short.
TLogBytes TLogWalk::Region(std::uint32_t from, std::uint32_t end) const {
    const std::size_t stop = std::min<std::size_t>(end, bytes_.size());
    if (from >= stop) return TLogBytes();
    return bytes_.subspan(from, stop - from);
}

std::uint32_t TLogWalk::SlotEndAt(std::uint32_t offset, std::uint32_t end) const {
    const std::uint32_t slot_end = CredibleSlotEnd(offset, Region(offset, end), end);
    return slot_end <= bytes_.size() ? slot_end : 0;
}

TLogChain TLogWalk::ChainBehind(std::uint32_t from, std::uint32_t end) const {
    return end <= bytes_.size() ? FindChainToEnd(Region(from, end), from) : TLogChain();
}

// Returns where the walk goes on. A write position that lied made a writer put its record into the
// newest slot, which is among the slots already: that record begins in front of the place to which
// the slot leads.
std::uint32_t TLogWalk::SkipDamage(std::uint32_t at, std::uint32_t end) {
    const TLogChain chain = ChainBehind(at, end);
    if (chain.count == 0 && may_overlay_) {
        may_overlay_ = false;
        const TLogChain inside = ChainBehind(slots_.back().offset + 1, end);
        if (inside.count > 0) {
            Leave(inside.first, inside.first, TEXT("a record begins inside the one before it"));
            return inside.first;
        }
    }
    const std::uint32_t next = chain.count > 0 ? chain.first : end;
    Leave(at, next,
          at >= bytes_.size() ? TEXT("the file ends before its ring does")
                              : TEXT("no credible record begins here"));
    return next;
}

void TLogWalk::Leave(std::uint32_t from, std::uint32_t end, const WCHAR* reason) {
    gaps_.push_back({slots_.size(), {from, end - from, UnicodeString(reason)}});
}

void TLogWalk::CollectAll() {
    const auto end = static_cast<std::uint32_t>(std::min<std::size_t>(bytes_.size(), UINT32_MAX));
    std::uint32_t at = kFirstSlot;
    while (at < end) {
        const std::uint32_t slot_end = SlotEndAt(at, end);
        if (slot_end != 0) slots_.push_back({at, slot_end});
        at = slot_end != 0 ? slot_end : at + 1;
    }
    const bool wrapped = BeginAtOldest();
    std::uint32_t expected = wrapped ? slots_.back().end : kFirstSlot;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const TSlot slot = slots_[i];
        if (slot.offset < expected) expected = kFirstSlot;
        if (slot.offset > expected) {
            gaps_.push_back({i,
                             {expected, slot.offset - expected,
                              UnicodeString(TEXT("no credible record begins here"))}});
        }
        expected = slot.end;
    }
}

std::uint64_t TLogWalk::TimeAt(const TSlot& slot) const {
    const std::uint32_t width = bytes_[slot.offset + kLinkSize] & kTagWidth;
    std::uint64_t time = 0;
    std::memcpy(&time, bytes_.data() + slot.offset + kLinkSize + 1 + width, sizeof(time));
    return time;
}

// The slots lie as the ring has them: the newest ones at the front when it has wrapped, which is
// the result.
bool TLogWalk::BeginAtOldest() {
    const auto oldest =
        std::min_element(slots_.begin(), slots_.end(),
                         [this](const TSlot& a, const TSlot& b) { return TimeAt(a) < TimeAt(b); });
    const bool wrapped = oldest != slots_.begin();
    std::rotate(slots_.begin(), oldest, slots_.end());
    return wrapped;
}

}  // namespace Mox
