// What can be believed of a log file's ring. The writer and the reader share these rules; they look
// at bytes only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "log_file/log_format.h"

namespace Mox {

using TLogBytes = std::span<const std::uint8_t>;

// Size of a record by its own tag and length; 0 when the tag is none of a record or `bytes` ends
// before the length does. The record may be longer than `bytes`.
std::uint64_t LogRecordSize(TLogBytes bytes);

// Where the slot at `offset` ends, when it is credible: its link equals its offset + 4 + the record
// size, and does not pass `end`. Else 0. `head` begins at the slot.
std::uint32_t CredibleSlotEnd(std::uint32_t offset, TLogBytes head, std::uint32_t end);

// Version and limit are ours, and the positions and the count can belong together. An empty ring
// may hold any positions.
bool IsPlausible(const TLogFileHeader& header);

// Makes the ring empty in place; `limit` becomes the file's limit.
void EmptyRing(TLogFileHeader& header, std::uint32_t limit);

}  // namespace Mox
