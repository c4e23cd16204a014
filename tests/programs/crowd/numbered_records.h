// Log records that can be checked. Each holds the number of its writer, its own number, and a data
// block that is computed from both. So a check finds each record that is damaged, lost, doubled or
// out of order.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "log_file/log_format.h"
#include "mox_classes/text/sysutils_numbers.h"
#include "mox_log/logger.h"

namespace stress {

inline constexpr std::uint32_t kLargestBlock = 1500;
// No slot of a numbered record is longer.
inline constexpr std::uint32_t kLargestSlot = kLargestBlock + 150;
// For a run with other records, set before its processes start: the largest block of a record, and
// whether all have a block of that size.
inline std::uint32_t largest_block = kLargestBlock;
inline bool equal_blocks = false;

struct TNumber {
    std::uint32_t writer = 0;
    std::uint32_t number = 0;  // from 1 on
};

inline std::uint64_t Scramble(std::uint64_t x) {
    x += 0x9E3779B97F4A7C15;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
    return x ^ (x >> 31);
}

// Mostly the size of a usual log line, sometimes much more, sometimes 0.
inline std::vector<std::uint8_t> BlockOf(TNumber n) {
    std::uint64_t state = Scramble(std::uint64_t{n.writer} << 32 | n.number);
    const std::uint32_t bound = state % 16 == 0 ? largest_block : std::min(200U, largest_block);
    std::vector<std::uint8_t> block(equal_blocks ? largest_block : (state >> 8) % (bound + 1));
    for (std::size_t at = 0; at < block.size(); at += sizeof(state)) {
        state = Scramble(state);
        std::memcpy(block.data() + at, &state, std::min(sizeof(state), block.size() - at));
    }
    return block;
}

inline void LogNumber(TNumber n) {
    std::vector<std::uint8_t> block = BlockOf(n);
    Mox::GetLogger()->Log('i', TEXT("stress"), static_cast<int>(n.number),
                          Sysutils::UnicodePrintf(TEXT("%u:%u"), n.writer, n.number),
                          block.empty() ? UnicodeString() : UnicodeString(TEXT("block")),
                          block.data(), static_cast<int>(block.size()));
}

// By its source; other records may stand between these.
inline bool IsNumbered(const Mox::TLogMsg& message) {
    return message.source == UnicodeString(TEXT("stress"));
}

// False when the record is not one of these, or not whole.
inline bool ReadNumber(const Mox::TLogMsg& message, TNumber& n) {
    const int colon = message.text.Pos(TEXT(":"));
    if (colon == 0 || !IsNumbered(message)) return false;
    n.writer =
        static_cast<std::uint32_t>(Sysutils::StrToIntDef(message.text.SubString(1, colon - 1), 0));
    n.number = static_cast<std::uint32_t>(message.line);
    if (!(message.text == Sysutils::UnicodePrintf(TEXT("%u:%u"), n.writer, n.number))) return false;
    const std::vector<std::uint8_t> block = BlockOf(n);
    return block.size() == static_cast<std::size_t>(std::abs(message.dataSize)) &&
           (block.empty() || std::memcmp(block.data(), message.data, block.size()) == 0);
}

}  // namespace stress
