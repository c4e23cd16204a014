#include "report/zip_writer.h"

#include <windows.h>
#include <zlib.h>

#include <limits>
#include <new>

#include "base/exit_code.h"

namespace qv {

namespace {

constexpr std::uint32_t kLocalSignature = 0x04034B50;
constexpr std::uint32_t kCentralSignature = 0x02014B50;
constexpr std::uint32_t kEndSignature = 0x06054B50;
constexpr std::uint16_t kVersionNeeded = 20;
constexpr std::uint16_t kUtf8Names = 1 << 11;
constexpr std::uint16_t kDeflated = 8;
constexpr std::size_t kMostEntries = 0xFFFF;
constexpr std::size_t kMostBytes = std::numeric_limits<std::int32_t>::max();

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

[[noreturn]] void TooLarge() {
    throw Failure("the archive would be too large");
}

// zlib's streams read through a pointer to bytes that may change, and change none.
Bytef* Input(std::string_view bytes) {
    return const_cast<Bytef*>(reinterpret_cast<const Bytef*>(bytes.data()));
}

// The bytes as a raw deflate stream.
std::string Deflated(std::string_view bytes) {
    constexpr int kRawWindow = -15;
    constexpr int kUsualMemory = 8;
    // One call takes all of it, since there is room for the longest result.
    std::string packed(deflateBound(nullptr, static_cast<uLong>(bytes.size())), '\0');
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kRawWindow, kUsualMemory,
                     Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
    stream.next_in = Input(bytes);
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&stream, Z_FINISH);
    deflateEnd(&stream);
    if (result != Z_STREAM_END) throw Failure("the archive cannot be compressed");
    packed.resize(stream.total_out);
    return packed;
}

}  // namespace

void ZipWriter::Add(const std::string& name, std::string_view bytes) {
    if (name.size() > 0xFFFF || bytes.size() > kMostBytes || entries_.size() == kMostEntries)
        TooLarge();
    const std::string packed = Deflated(bytes);
    if (packed.size() > kMostBytes - bytes_.size()) TooLarge();
    const Entry entry{
        name,
        static_cast<std::uint32_t>(crc32_z(0, Input(bytes), bytes.size())),
        static_cast<std::uint32_t>(packed.size()),
        static_cast<std::uint32_t>(bytes.size()),
        static_cast<std::uint32_t>(bytes_.size()),
    };
    Put32(bytes_, kLocalSignature);
    PutDescription(entry);
    bytes_ += name;
    bytes_ += packed;
    entries_.push_back(entry);
}

// What the local and the central header have in common.
void ZipWriter::PutDescription(const Entry& entry) {
    Put16(bytes_, kVersionNeeded);
    Put16(bytes_, kUtf8Names);
    Put16(bytes_, kDeflated);
    Put32(bytes_, DosTime());
    Put32(bytes_, entry.crc);
    Put32(bytes_, entry.packed_size);
    Put32(bytes_, entry.size);
    Put16(bytes_, static_cast<std::uint32_t>(entry.name.size()));
    Put16(bytes_, 0);  // extra fields
}

std::string ZipWriter::Finish() {
    const std::size_t start = bytes_.size();
    for (const Entry& entry : entries_) {
        Put32(bytes_, kCentralSignature);
        Put16(bytes_, kVersionNeeded);  // made by
        PutDescription(entry);
        Put16(bytes_, 0);  // comment
        Put16(bytes_, 0);  // disk
        Put16(bytes_, 0);  // internal attributes
        Put32(bytes_, 0);  // external attributes
        Put32(bytes_, entry.offset);
        bytes_ += entry.name;
    }
    if (bytes_.size() > kMostBytes) TooLarge();
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
