#include "log_file/ring_finder.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace Mox {

namespace {

std::uint64_t GapBytes(const TFoundRing& ring) {
    std::uint64_t bytes = 0;
    for (const TRingGap& gap : ring.gaps) bytes += gap.end - gap.offset;
    return bytes;
}

// Of the records that a repair has put into gaps, and may have been killed before it wrote the
// header.
std::uint64_t FilledBytes(const TRingScanner& scanner, const TFoundRing& ring) {
    std::uint64_t bytes = 0;
    for (const TLogSlot& slot : ring.slots) {
        const TLogRecordFixed fixed = scanner.FixedOf(slot);
        if (fixed.level == '>' && fixed.line == 0) bytes += slot.end - slot.offset;
    }
    return bytes;
}

// Whether the records that are missing can have stood in the gaps.
bool CountFits(const TRingScanner& scanner, const TFoundRing& ring, std::uint32_t count) {
    if (count < ring.slots.size()) return false;
    const std::uint64_t missing = count - ring.slots.size();
    if (missing < ring.gaps.size()) return false;
    const std::uint64_t least = missing * kSmallestSlot;
    return least <= GapBytes(ring) || least <= GapBytes(ring) + FilledBytes(scanner, ring);
}

// A writer that was killed may leave one record behind the newest. Two are a write position that
// cannot be true, unless they are older.
bool NewerOnesFollow(const TRingScanner& scanner, const TFoundRing& ring,
                     const TLogFileHeader& header) {
    if (ring.slots.empty()) return false;
    const TLogSlot newest = ring.slots.back();
    const std::uint32_t first = scanner.SlotEnd(newest.end, UINT32_MAX);
    const std::uint32_t second = first == 0 ? 0 : scanner.SlotEnd(first, UINT32_MAX);
    return newest.end == header.write_position && second != 0 &&
           scanner.TimeOf({first, second}) >= scanner.TimeOf(newest);
}

// Whether a slot reaches over an end of the parts that the header names:
// then that position cannot be true.
bool CutsSlot(const TRingScanner& scanner, const TFoundRing& ring, const TLogFileHeader& header) {
    for (const TRingGap& gap : ring.gaps) {
        const bool at_end = gap.end == header.write_position || gap.end == header.wrap;
        if (at_end && scanner.NextSlot(gap.offset, gap.end, UINT32_MAX) != gap.end) return true;
    }
    if (ring.gaps.empty() || ring.gaps.front().offset != header.oldest) return false;
    const std::uint32_t oldest = header.oldest;
    std::uint32_t at = header.wrap != 0 ? header.write_position : kFirstSlot;
    while ((at = scanner.NextSlot(at, oldest, UINT32_MAX)) < oldest) {
        at = scanner.SlotEnd(at, UINT32_MAX);
        if (at > oldest) return true;
    }
    return false;
}

TFoundRing NamedByHeader(const TLogFileHeader& header, TLogBytes file) {
    TRingScanner scanner(file);
    TFoundRing ring;
    if (header.wrap != 0) scanner.Scan(header.oldest, header.wrap);
    ring.front = scanner.slots.size();
    scanner.Scan(header.wrap != 0 ? kFirstSlot : header.oldest, header.write_position);
    ring.slots = std::move(scanner.slots);
    ring.gaps = std::move(scanner.gaps);
    ring.by_header = CountFits(scanner, ring, header.count) &&
                     (ring.gaps.empty() || (!NewerOnesFollow(scanner, ring, header) &&
                                            !CutsSlot(scanner, ring, header)));
    return ring;
}

// All slots of the file, and where among them the newest one ends.
class TUnnamedRing {
  public:
    TUnnamedRing(const TLogFileHeader& header, TLogBytes file)
        : header_(header),
          end_(static_cast<std::uint32_t>(std::min<std::size_t>(file.size(), UINT32_MAX))),
          scanner_(file) {
        scanner_.Scan(kFirstSlot, end_);
        times_.reserve(scanner_.slots.size());
        for (const TLogSlot& slot : scanner_.slots) times_.push_back(scanner_.TimeOf(slot));
        DropOutliers();
    }

    TFoundRing Find() {
        if (scanner_.slots.empty()) {
            TFoundRing nothing;
            AddGap(nothing, kFirstSlot, end_);
            return nothing;
        }
        const std::size_t split = BestSplit();
        if (split == 0) return WithFront(TFoundRing(), Count());
        TTail tail{split, OldestLapEnd(split), false};
        BoundByHeader(split, tail);
        TFoundRing ring;
        if (!tail.bounded) Append(ring, tail.end, Count());
        ring.behind_wrap = ring.slots.size();
        Append(ring, tail.oldest, tail.end);
        return WithFront(std::move(ring), split);
    }

  private:
    // The slots behind the newest one, in the order of the file.
    struct TTail {
        std::size_t oldest;
        std::size_t end;
        bool bounded;  // the others had been given up
    };

    std::size_t Count() const { return scanner_.slots.size(); }
    bool IsGapBefore(std::size_t i) const {
        return scanner_.slots[i].offset != scanner_.slots[i - 1].end;
    }
    static std::uint64_t Distance(std::uint64_t a, std::uint64_t b) {
        return a < b ? b - a : a - b;
    }

    // Slots behind the wrap offset were left by an earlier lap. Where the tail ends, the record was
    // written right before the one at the front of the file.
    std::size_t OldestLapEnd(std::size_t split) const {
        std::size_t best = Count();
        std::uint64_t nearest = Distance(times_.front(), times_.back()) / 4;
        for (std::size_t i = Count(); --i > split;) {
            const std::uint64_t distance = Distance(times_.front(), times_[i - 1]);
            if (!IsGapBefore(i) || times_[i] >= times_[i - 1] || distance >= nearest) continue;
            nearest = distance;
            best = i;
        }
        return best;
    }

    // One record whose time was damaged says nothing about its neighbours.
    void DropOutliers() {
        const std::vector<std::uint64_t> raw = times_;
        for (std::size_t i = 1; i + 1 < raw.size(); ++i) {
            const auto [low, high] = std::minmax(raw[i - 1], raw[i + 1]);
            times_[i] = std::clamp(raw[i], low, high);
        }
    }

    std::uint64_t Span() const {
        const auto [least, most] = std::minmax_element(times_.begin(), times_.end());
        return *most - *least;
    }

    // Whether the records at the front of the file are older than those at its end: then the ring
    // has not wrapped, and a time that falls is a clock that was set back.
    bool IsFrontOlder() const {
        return times_.front() < times_.back() && times_.back() - times_.front() > Span() / 16;
    }

    // Whether the slots in front of this one may be the last lap's end, followed by the file's
    // front.
    bool MayEndLap(std::size_t i) const {
        return times_[i - 1] <= times_.front() && times_.front() - times_[i - 1] <= Span() / 64;
    }

    // The place of the only gap between records; 0 when there is none, or more than one.
    std::size_t OnlyGap() const {
        std::size_t only = 0;
        for (std::size_t i = 1; i < Count(); ++i) {
            if (!IsGapBefore(i)) continue;
            if (only != 0) return 0;
            only = i;
        }
        return only;
    }

    // In a ring that has wrapped the oldest record stands behind the newest one: the time jumps
    // there, nearly always over the rest of an older record, and hardly changes from the end of the
    // file to its front. A clock that was set makes a jump too, but not the rest.
    std::size_t SplitByTime() const {
        const bool front_is_older = IsFrontOlder();
        const std::size_t only_gap = front_is_older || Span() == 0 ? 0 : OnlyGap();
        if (only_gap != 0 && !MayEndLap(only_gap)) return only_gap;
        std::size_t best = 0;
        double most = 0;
        std::uint64_t join = Distance(times_.front(), times_.back());
        for (std::size_t i = Count(); --i > 0;) {
            const bool gap = IsGapBefore(i);
            const bool falls = times_[i] < times_[i - 1];
            const double jump = static_cast<double>(Distance(times_[i], times_[i - 1]));
            const double loss = static_cast<double>(join);
            const double value = gap ? 4 * (jump - loss) : jump - 4 * loss;
            if ((gap || (falls && !front_is_older)) && value > most) {
                most = value;
                best = i;
            }
            if (gap && falls) join = std::min(join, Distance(times_.front(), times_[i - 1]));
        }
        return best;
    }

    // What is left of the header may be right.
    int Votes(std::size_t split, std::size_t by_time) const {
        const std::vector<TLogSlot>& slots = scanner_.slots;
        const std::size_t newest = split == 0 ? Count() - 1 : split - 1;
        const std::uint32_t oldest = split == 0 ? kFirstSlot : slots[split].offset;
        int votes = split == by_time ? 3 : 0;
        if (slots[newest].end == header_.write_position) votes += 2;
        if (oldest == header_.oldest) votes += 2;
        if ((split == 0) == (header_.wrap == 0)) ++votes;
        return votes;
    }

    std::size_t BestSplit() const {
        const std::size_t by_time = SplitByTime();
        std::size_t best = by_time;
        int most = Votes(by_time, by_time);
        const auto consider = [&](std::size_t split) {
            const int votes = Votes(split, by_time);
            if (votes <= most) return;
            most = votes;
            best = split;
        };
        consider(0);
        for (std::size_t i = 1; i < Count(); ++i) {
            const bool named = scanner_.slots[i - 1].end == header_.write_position ||
                               scanner_.slots[i].offset == header_.oldest;
            if (named) consider(i);
        }
        return best;
    }

    // Where the write position of the header is right, its oldest slot and its wrap offset say what
    // had been given up, unless the count says otherwise.
    void BoundByHeader(std::size_t split, TTail& tail) const {
        const std::vector<TLogSlot>& slots = scanner_.slots;
        if (slots[split - 1].end != header_.write_position) return;
        TTail named{split, split, true};
        if (header_.wrap != 0) {
            const auto behind = slots.begin() + static_cast<std::ptrdiff_t>(split);
            const auto oldest = std::find_if(behind, slots.end(), [&](const TLogSlot& slot) {
                return slot.offset == header_.oldest;
            });
            const auto last = std::find_if(oldest, slots.end(), [&](const TLogSlot& slot) {
                return slot.end == header_.wrap;
            });
            if (last == slots.end()) return;
            named.oldest = static_cast<std::size_t>(oldest - slots.begin());
            named.end = static_cast<std::size_t>(last - slots.begin()) + 1;
        } else if (header_.oldest != kFirstSlot) {
            return;
        }
        const std::size_t held = named.end - named.oldest + split;
        if (header_.count <= held || header_.count > Count()) tail = named;
    }

    // Adds the slots that stand at the front of the file, which are the newest.
    TFoundRing WithFront(TFoundRing ring, std::size_t end) const {
        ring.front = ring.slots.size();
        AddGap(ring, kFirstSlot, scanner_.slots.front().offset);
        Append(ring, 0, end);
        if (end == Count()) AddGap(ring, scanner_.slots.back().end, end_);
        return ring;
    }

    void Append(TFoundRing& ring, std::size_t from, std::size_t to) const {
        for (std::size_t i = from; i < to; ++i) {
            if (i > from && IsGapBefore(i)) {
                AddGap(ring, scanner_.slots[i - 1].end, scanner_.slots[i].offset);
            }
            ring.slots.push_back(scanner_.slots[i]);
        }
    }

    static void AddGap(TFoundRing& ring, std::uint32_t from, std::uint32_t end) {
        if (from >= end) return;
        ring.gaps.push_back({ring.slots.size(), from, end, TEXT("no credible record begins here")});
    }

    const TLogFileHeader& header_;
    const std::uint32_t end_;
    TRingScanner scanner_;
    std::vector<std::uint64_t> times_;
};

// A writer that was killed at the first record of a new file leaves one that is not counted.
bool IsUncounted(const TLogFileHeader& header, const TFoundRing& ring) {
    return header.counter == 0 && ring.slots.size() == 1 && ring.slots[0].offset == kFirstSlot;
}

// What a writer leaves that was killed when all others had given way for its own record. One
// number that was flipped does not look like this.
bool IsEmptied(const TLogFileHeader& header) {
    return header.counter != 0 && header.wrap == 0 && header.oldest == kFirstSlot &&
           header.write_position == kFirstSlot;
}

}  // namespace

TFoundRing FindRing(const TLogFileHeader& header, TLogBytes file) {
    const bool plausible = IsPlausible(header);
    TFoundRing empty;
    empty.by_header = true;
    if (plausible && header.count == 0 && IsEmptied(header)) return empty;
    if (plausible && header.count > 0) {
        TFoundRing named = NamedByHeader(header, file);
        if (named.by_header) return named;
    }
    TFoundRing found = TUnnamedRing(header, file).Find();
    if (!plausible || header.count > 0) return found;
    if (!found.slots.empty() && !IsUncounted(header, found)) return found;
    return empty;
}

}  // namespace Mox
