#include "log_file/log_repair.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "log_file/ring_finder.h"

namespace Mox {

namespace {

// Link, tag, length and fixed part, then two empty strings.
constexpr std::uint32_t kSmallestFiller = kSmallestSlot + 2;
constexpr char kSource[] = "log_file";

// A counter that no log reaches is a flipped bit.
constexpr std::uint64_t kHighestCounter = std::uint64_t{1} << 48U;

bool IsZero(TLogBytes bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

// No more than a maker writes, of whom a write may have failed.
bool IsNewFile(TLogBytes file) {
    return file.size() == kHeaderSize + kLinkSize;
}

// What another program's file can hardly begin with.
bool LooksLikeHeader(const TLogFileHeader& header, TLogBytes file, std::uint32_t limit) {
    if (file.size() < offsetof(TLogFileHeader, reserved) || !IsZero(header.reserved)) return false;
    if (IsNewFile(file) && IsZero(file.subspan(kHeaderSize))) return true;
    return IsPlausible(header) || (file.size() >= kHeaderSize && header.limit == limit);
}

// One record of exactly the size of a gap. The widths of its numbers do not depend on the text, so
// that every size can be had.
class TFiller {
  public:
    TFiller(std::uint32_t offset, std::uint32_t size, std::uint64_t time)
        : width_(size < 200 ? 1 : kWidestNumber), size_(size) {
        bytes_.reserve(size);
        Number(offset + size, kLinkSize);
        Head(time);
        Strings(std::to_string(size) + " bytes were lost here");
    }
    std::vector<std::uint8_t> Take() { return std::move(bytes_); }

  private:
    std::uint32_t Left() const { return size_ - static_cast<std::uint32_t>(bytes_.size()); }

    void Number(std::uint64_t number, std::uint32_t width) {
        for (; width > 0; --width, number >>= 8U) {
            bytes_.push_back(static_cast<std::uint8_t>(number));
        }
    }

    void Head(std::uint64_t time) {
        bytes_.push_back(static_cast<std::uint8_t>(kRecordTag | width_));
        Number(Left() - width_ - kRecordFixedSize, width_);
        TLogRecordFixed fixed{};
        fixed.time = time;
        fixed.level = '>';
        fixed.process_id = GetCurrentProcessId();
        fixed.thread_id = GetCurrentThreadId();
        fixed.session_id = 0xFFFFFFFF;
        const auto* first = reinterpret_cast<const std::uint8_t*>(&fixed);
        bytes_.insert(bytes_.end(), first, first + sizeof(fixed));
    }

    // The text takes what is left: the missing characters are blanks.
    void Strings(std::string text) {
        constexpr std::uint32_t kSourceSize = sizeof(kSource) - 1;
        const bool has_room = Left() >= 2 + kSourceSize + 1 + width_ + text.size();
        has_room ? String(kSource, 1) : Number(kEmptyStringTag, 1);
        if (Left() == 1) return Number(kEmptyStringTag, 1);
        text.resize(Left() - 1 - width_, ' ');
        String(text, width_);
    }

    void String(const std::string& text, std::uint32_t width) {
        Number(static_cast<std::uint8_t>(TLogEncoding::Utf8) | width, 1);
        Number(text.size(), width);
        bytes_.insert(bytes_.end(), text.begin(), text.end());
    }

    std::uint32_t width_;
    std::uint32_t size_;
    std::vector<std::uint8_t> bytes_;
};

// Joins the two parts of a ring to chains without gaps.
class TMender {
  public:
    TMender(const TFoundRing& ring, TLogBytes file, TLogRepair& plan)
        : ring_(ring), times_(file), plan_(plan) {}

    void Mend() {
        const TChain tail = Join(ring_.behind_wrap, ring_.front, 0);
        const TChain front = Join(ring_.front, ring_.slots.size(), tail.from != 0 ? kFirstSlot : 0);
        TLogFileHeader& h = plan_.header;
        const bool wrapped = tail.from != 0;
        h.count = plan_.kept + static_cast<std::uint32_t>(plan_.patches.size());
        h.oldest = wrapped ? tail.from : front.from;
        h.wrap = wrapped ? tail.end : 0;
        h.write_position = front.from != 0 ? front.end : kFirstSlot;
    }

  private:
    struct TChain {
        std::uint32_t from = 0;  // 0: no records
        std::uint32_t end = 0;
    };

    // The slots from `first` to `last`; the chain begins at `from`, or with its first slot for 0.
    TChain Join(std::size_t first, std::size_t last, std::uint32_t from) {
        std::vector<TLogSlot> kept;
        for (std::size_t i = first; i < last; ++i) {
            const TLogSlot slot = ring_.slots[i];
            // A gap that is too small for a record takes an older one with it. Only a file that
            // was made to look like this has one.
            const auto gap = [&] {
                const std::uint32_t end = kept.empty() ? from : kept.back().end;
                return end == 0 ? 0 : slot.offset - end;
            };
            while (gap() > 0 && gap() < kSmallestFiller && !kept.empty()) kept.pop_back();
            if (gap() == 0 || gap() >= kSmallestFiller) kept.push_back(slot);
        }
        if (kept.empty()) return TChain();
        const TChain chain{from != 0 ? from : kept.front().offset, kept.back().end};
        std::uint32_t end = chain.from;
        for (const TLogSlot& slot : kept) {
            Fill(end, slot);
            end = slot.end;
        }
        plan_.kept += static_cast<std::uint32_t>(kept.size());
        return chain;
    }

    void Fill(std::uint32_t from, const TLogSlot& next) {
        if (from == next.offset) return;
        const std::uint32_t size = next.offset - from;
        plan_.patches.push_back({from, TFiller(from, size, times_.TimeOf(next)).Take()});
        plan_.lost += size;
    }

    const TFoundRing& ring_;
    const TRingScanner times_;
    TLogRepair& plan_;
};

}  // namespace

// A ring that has wrapped reaches nearly to its limit. One high bit more than the limit that every
// process is told is a flipped bit.
bool IsLimitBelieved(const TLogFileHeader& header, std::uint32_t used, std::uint32_t limit) {
    const std::uint32_t own = header.limit;
    if (header.version != TLogFileHeader::kVersion || own < kSmallestLimit || own < used) {
        return false;
    }
    if (own == limit) return true;
    const std::uint64_t told = limit;
    const bool one_bit = ((own ^ limit) & ((own ^ limit) - 1)) == 0;
    if (one_bit && own / 8 > told) return false;
    return header.wrap == 0 || own / 2 <= used;
}

TLogRepair PlanRepair(const TLogFileHeader& header, TLogBytes file, std::uint32_t limit) {
    TLogRepair plan;
    plan.header = header;
    const TFoundRing ring = FindRing(header, file);
    std::uint32_t used = kFirstSlot;
    for (const TLogSlot& slot : ring.slots) used = std::max(used, slot.end);
    const bool limit_believed = IsLimitBelieved(header, used, limit);
    const bool all_there = ring.by_header && ring.gaps.empty() && ring.slots.size() == header.count;
    if (ring.slots.empty() && !LooksLikeHeader(header, file, limit)) {
        plan.state = TLogState::NotOurs;
        return plan;
    }
    if (all_there && limit_believed) return plan;
    const bool all_lost = ring.slots.empty() && !all_there && !IsNewFile(file);
    plan.state = all_lost ? TLogState::NothingLeft : TLogState::Damaged;
    if (!limit_believed) plan.header.limit = std::max({limit, used, kSmallestLimit});
    if (plan.header.counter > kHighestCounter) plan.header.counter = 0;
    if (ring.slots.empty()) {
        EmptyRing(plan.header, plan.header.limit);
        return plan;
    }
    plan.header.version = TLogFileHeader::kVersion;
    TMender(ring, file, plan).Mend();
    plan.header.counter = std::max<std::uint64_t>(plan.header.counter, plan.header.count);
    return plan;
}

}  // namespace Mox
