#include "doctor/zip_writer.h"

#include <windows.h>

#include <array>
#include <limits>

#include "base/exit_code.h"

namespace qv {

namespace {

constexpr std::uint32_t kLocalSignature = 0x04034B50;
constexpr std::uint32_t kCentralSignature = 0x02014B50;
constexpr std::uint32_t kEndSignature = 0x06054B50;
constexpr std::uint16_t kVersionNeeded = 20;
constexpr std::uint16_t kUtf8Names = 1 << 11;
constexpr std::uint16_t kStored = 0;
constexpr std::size_t kMostEntries = 0xFFFF;

void Put(std::string& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}
void Put16(std::string& bytes, std::uint32_t value) {
    Put(bytes, value, 2);
}
void Put32(std::string& bytes, std::uint32_t value) {
    Put(bytes, value, 4);
}

// Local time, two seconds a step; the date in the upper half.
std::uint32_t DosTime() {
    FILETIME time;
    FILETIME local;
    SYSTEMTIME t;
    GetSystemTimeAsFileTime(&time);
    if (!FileTimeToLocalFileTime(&time, &local) || !FileTimeToSystemTime(&local, &t) ||
        t.wYear < 1980 || t.wYear > 2107)
        return 1u << 21 | 1u << 16;  // 1980-01-01
    return (t.wYear - 1980u) << 25 | std::uint32_t{t.wMonth} << 21 | std::uint32_t{t.wDay} << 16 |
           std::uint32_t{t.wHour} << 11 | std::uint32_t{t.wMinute} << 5 | t.wSecond / 2u;
}

// What the local and the central header have in common.
void PutDescription(std::string& bytes, std::uint32_t crc, std::uint32_t size,
                    const std::string& name) {
    Put16(bytes, kVersionNeeded);
    Put16(bytes, kUtf8Names);
    Put16(bytes, kStored);
    Put32(bytes, DosTime());
    Put32(bytes, crc);
    Put32(bytes, size);
    Put32(bytes, size);
    Put16(bytes, static_cast<std::uint32_t>(name.size()));
    Put16(bytes, 0);  // extra fields
}

[[noreturn]] void TooLarge() {
    throw Failure("the archive would be too large");
}

}  // namespace

std::uint32_t Crc32(std::string_view bytes) {
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> rows{};
        for (std::uint32_t i = 0; i < rows.size(); ++i) {
            std::uint32_t row = i;
            for (int bit = 0; bit < 8; ++bit) row = (row >> 1) ^ ((row & 1) * 0xEDB88320u);
            rows[i] = row;
        }
        return rows;
    }();
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char c : bytes) crc = table[(crc ^ static_cast<unsigned char>(c)) & 0xFF] ^ crc >> 8;
    return ~crc;
}

void ZipWriter::Add(const std::string& name, std::string_view bytes) {
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    if (name.size() > 0xFFFF || bytes.size() > kMost - bytes_.size() ||
        entries_.size() == kMostEntries)
        TooLarge();
    const Entry entry{name, Crc32(bytes), static_cast<std::uint32_t>(bytes.size()),
                      static_cast<std::uint32_t>(bytes_.size())};
    Put32(bytes_, kLocalSignature);
    PutDescription(bytes_, entry.crc, entry.size, name);
    bytes_ += name;
    bytes_ += bytes;
    entries_.push_back(entry);
}

std::string ZipWriter::Finish() {
    const std::size_t start = bytes_.size();
    for (const Entry& entry : entries_) {
        Put32(bytes_, kCentralSignature);
        Put16(bytes_, kVersionNeeded);  // made by
        PutDescription(bytes_, entry.crc, entry.size, entry.name);
        Put16(bytes_, 0);  // comment
        Put16(bytes_, 0);  // disk
        Put16(bytes_, 0);  // internal attributes
        Put32(bytes_, 0);  // external attributes
        Put32(bytes_, entry.offset);
        bytes_ += entry.name;
    }
    if (bytes_.size() > std::numeric_limits<std::int32_t>::max()) TooLarge();
    const auto size = static_cast<std::uint32_t>(bytes_.size() - start);
    Put32(bytes_, kEndSignature);
    Put16(bytes_, 0);  // this disk
    Put16(bytes_, 0);  // the directory's
    Put16(bytes_, static_cast<std::uint32_t>(entries_.size()));
    Put16(bytes_, static_cast<std::uint32_t>(entries_.size()));
    Put32(bytes_, size);
    Put32(bytes_, static_cast<std::uint32_t>(start));
    Put16(bytes_, 0);  // comment
    return std::move(bytes_);
}

}  // namespace qv
