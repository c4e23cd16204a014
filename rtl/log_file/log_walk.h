// The credible slots of a copied log file, in the order in which they were written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "log_file/log_format.h"
#include "log_file/log_reader.h"
#include "log_file/log_ring.h"
#include "mox_classes/text/unicode_string.h"

namespace Mox {

// Looks at slots only, never into a record. One thread at a time; the bytes must outlive the walk.
class TLogWalk {
  public:
    struct TSlot {
        std::uint32_t offset;
        std::uint32_t end;
    };
    // What was left out in front of a slot, or behind the last one.
    struct TGap {
        std::size_t slot;
        TLogSkip skip;
    };

    explicit TLogWalk(TLogBytes bytes) : bytes_(bytes) {}

    // Follows the links from the oldest slot that the header names; the header must be plausible.
    void FollowRing(const TLogFileHeader& header);
    // Without a header that could be believed: every credible slot that the file holds, from the
    // one with the oldest time on.
    void CollectAll();

    const std::vector<TSlot>& Slots() const { return slots_; }
    const std::vector<TGap>& Gaps() const { return gaps_; }

  private:
    void FollowRegion(std::uint32_t from, std::uint32_t end);
    std::uint32_t SkipDamage(std::uint32_t at, std::uint32_t end);
    TLogChain ChainBehind(std::uint32_t from, std::uint32_t end) const;
    TLogBytes Region(std::uint32_t from, std::uint32_t end) const;
    std::uint32_t SlotEndAt(std::uint32_t offset, std::uint32_t end) const;
    std::uint64_t TimeAt(const TSlot& slot) const;
    bool BeginAtOldest();
    void Leave(std::uint32_t from, std::uint32_t end, const WCHAR* reason);

    TLogBytes bytes_;
    std::vector<TSlot> slots_;
    std::vector<TGap> gaps_;
    bool may_overlay_ = false;  // the last slot stands in front of the place that is looked at
};

}  // namespace Mox
