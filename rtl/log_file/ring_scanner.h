// The credible slots of a part of a log file, and the gaps between them, in one pass.
//
// Behind bytes that cannot be believed the scanner goes on at the next credible slot, wherever that
// is. It looks at slots only, never into a record.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "log_file/log_ring.h"

namespace Mox {

struct TLogSlot {
    std::uint32_t offset;
    std::uint32_t end;
};

// Bytes in which no credible slot begins.
struct TRingGap {
    std::size_t slot;  // the gap stands in front of this one, or behind the last one
    std::uint32_t offset;
    std::uint32_t end;
    const WCHAR* reason;
};

// One thread at a time; the bytes must outlive the scanner.
class TRingScanner {
  public:
    explicit TRingScanner(TLogBytes bytes) : bytes_(bytes) {}

    // Adds the slots and the gaps from `from` to `end`, which may lie behind the bytes.
    void Scan(std::uint32_t from, std::uint32_t end);

    // The end of the slot at `offset`; 0 when it is not credible or passes `end`.
    std::uint32_t SlotEnd(std::uint32_t offset, std::uint32_t end) const;
    // The first credible slot that begins from `from` on in front of `stop` and does not pass
    // `end`; else `stop`.
    std::uint32_t NextSlot(std::uint32_t from, std::uint32_t stop, std::uint32_t end) const;
    TLogRecordFixed FixedOf(const TLogSlot& slot) const;
    std::uint64_t TimeOf(const TLogSlot& slot) const { return FixedOf(slot).time; }

    std::vector<TLogSlot> slots;
    std::vector<TRingGap> gaps;

  private:
    std::uint32_t SlotInside(const TLogSlot& slot, std::uint32_t end) const;
    std::uint32_t SkipDamage(std::uint32_t at, std::uint32_t end, bool behind_slot);

    TLogBytes bytes_;
};

}  // namespace Mox
