// What can be believed of a log file's ring. The writer and the reader share these rules; they look
// at bytes only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "log_file/log_format.h"

namespace Mox {

using TLogBytes = std::span<const std::uint8_t>;

// Size of a record by its own tag and length; 0 when the tag is none of a record or `bytes` ends
// before the length does. The record may be longer than `bytes`.
// Inlined, with the next one: a look at a ring asks for every record of it.
inline std::uint64_t LogRecordSize(TLogBytes bytes) {
    if (bytes.empty() || (bytes[0] & kTagKind) != kRecordTag) return 0;
    const unsigned width = bytes[0] & kTagWidth;
    if (bytes.size() < 1 + width) return 0;
    const auto number = [&bytes](auto narrow) {
        std::memcpy(&narrow, bytes.data() + 1, sizeof narrow);
        return std::uint64_t{1} + sizeof narrow + kRecordFixedSize + narrow;
    };
    if (width == 1) return number(std::uint8_t{0});
    if (width == 2) return number(std::uint16_t{0});
    return width == 4 ? number(std::uint32_t{0}) : 0;
}

// Where the slot at `offset` ends, when it is credible: its link equals its offset + 4 + the record
// size, and does not pass `end`. Else 0. `head` begins at the slot.
inline std::uint32_t CredibleSlotEnd(std::uint32_t offset, TLogBytes head, std::uint32_t end) {
    if (head.size() < kLinkSize) return 0;
    std::uint32_t link = 0;
    std::memcpy(&link, head.data(), kLinkSize);
    const std::uint64_t size = LogRecordSize(head.subspan(kLinkSize));
    const bool credible = size != 0 && link == offset + kLinkSize + size && link <= end;
    return credible ? link : 0;
}

// Version and limit are ours, and the positions and the count can belong together. An empty ring
// may hold any positions.
bool IsPlausible(const TLogFileHeader& header);

// Makes the ring empty in place; `limit` becomes the file's limit.
void EmptyRing(TLogFileHeader& header, std::uint32_t limit);

}  // namespace Mox
