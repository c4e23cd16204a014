// The bytes of the shared log file. docs/formats/log_file.md explains them.
//
// A 96-byte header, then a ring of slots, each a link and one record. All numbers are
// little-endian; offsets count from the start of the file.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace Mox {

static_assert(std::endian::native == std::endian::little);

#pragma pack(push, 1)

struct TLogFileHeader {
    static constexpr std::uint32_t kVersion = 1;

    std::uint32_t version;
    std::uint64_t counter;         // one more for every record written
    std::uint32_t count;           // records in the ring
    std::uint32_t limit;           // size that the file never passes, fixed at its creation
    std::uint32_t write_position;  // end of the newest slot
    std::uint32_t oldest;          // offset of the oldest slot
    std::uint32_t wrap;            // end of the slots left behind the last wrap; 0: there are none
    std::uint8_t reserved[64];     // zero
};

// The part of a record that every message has; it follows the record's tag and length.
struct TLogRecordFixed {
    std::uint64_t time;  // UTC, 100 ns units since 1601
    std::int32_t level;
    std::uint32_t process_id;
    std::uint32_t thread_id;
    std::uint32_t session_id;
    std::int32_t line;
};

#pragma pack(pop)

static_assert(offsetof(TLogFileHeader, version) == 0);
static_assert(offsetof(TLogFileHeader, counter) == 4);
static_assert(offsetof(TLogFileHeader, count) == 12);
static_assert(offsetof(TLogFileHeader, limit) == 16);
static_assert(offsetof(TLogFileHeader, write_position) == 20);
static_assert(offsetof(TLogFileHeader, oldest) == 24);
static_assert(offsetof(TLogFileHeader, wrap) == 28);
static_assert(offsetof(TLogFileHeader, reserved) == 32);
static_assert(sizeof(TLogFileHeader) == 96);

static_assert(offsetof(TLogRecordFixed, time) == 0);
static_assert(offsetof(TLogRecordFixed, level) == 8);
static_assert(offsetof(TLogRecordFixed, process_id) == 12);
static_assert(offsetof(TLogRecordFixed, thread_id) == 16);
static_assert(offsetof(TLogRecordFixed, session_id) == 20);
static_assert(offsetof(TLogRecordFixed, line) == 24);
static_assert(sizeof(TLogRecordFixed) == 28);

inline constexpr std::uint32_t kHeaderSize = sizeof(TLogFileHeader);
inline constexpr std::uint32_t kFirstSlot = kHeaderSize;
inline constexpr std::uint32_t kLinkSize = 4;  // the slot's link: offset of its end
inline constexpr std::uint32_t kRecordFixedSize = sizeof(TLogRecordFixed);

// A tag's high nibble says what follows, its low nibble how wide the number behind it is.
inline constexpr std::uint8_t kTagKind = 0xF0;
inline constexpr std::uint8_t kTagWidth = 0x0F;
inline constexpr std::uint8_t kRecordTag = 0x60;
inline constexpr std::uint8_t kEmptyStringTag = 0x00;
inline constexpr std::uint32_t kWidestNumber = 4;
// Link, tag and length: what tells where a slot ends.
inline constexpr std::uint32_t kSlotHeadSize = kLinkSize + 1 + kWidestNumber;
// The header and the first record's time: they change with every record, and with another file.
inline constexpr std::uint32_t kBeginningSize = kFirstSlot + kSlotHeadSize + sizeof(std::uint64_t);
inline constexpr std::uint32_t kSmallestSlot = kLinkSize + 2 + kRecordFixedSize;
inline constexpr std::uint32_t kSmallestLimit = kFirstSlot + kSmallestSlot;

// How a string's characters are stored.
enum class TLogEncoding : std::uint8_t {
    Utf8 = 0x10,            // counted in bytes
    Utf16BigEndian = 0x20,  // counted in code units
    Utf16 = 0x30,           // counted in code units
    Utf32BigEndian = 0x40,  // counted in code points; never written
    Utf32 = 0x50,           // counted in code points; never written
    Ansi = 0xF0,            // counted in bytes; written, but not read: the code page is not known
};

}  // namespace Mox
