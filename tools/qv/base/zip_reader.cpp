#include "base/zip_reader.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "base/exit_code.h"

namespace qv {

namespace {

constexpr std::uint32_t kLocalSignature = 0x04034B50;
constexpr std::uint32_t kCentralSignature = 0x02014B50;
constexpr std::uint32_t kEndSignature = 0x06054B50;
constexpr std::uint16_t kEncrypted = 1;
constexpr std::uint16_t kStored = 0, kDeflated = 8;
// Stand for a number that only ZIP64 has room for.
constexpr std::uint16_t kNoRoom16 = 0xFFFF;
constexpr std::uint32_t kNoRoom32 = 0xFFFFFFFF;

constexpr std::uint32_t kMostBytes = 256 << 20;  // of an entry
constexpr std::uint64_t kMostTogether = std::uint64_t{2} << 30;
constexpr std::uint32_t kBestDeflate = 1032;  // bytes that one byte stands for at most

#pragma pack(push, 1)

struct EndRecord {
    std::uint32_t signature;
    std::uint16_t disk, directory_disk, entries_here, entries;
    std::uint32_t directory_size, directory_offset;
    std::uint16_t comment_size;
};

struct CentralHeader {
    std::uint32_t signature;
    std::uint16_t made_by, needed, flags, method;
    std::uint32_t time, crc, packed_size, size;
    std::uint16_t name_size, extra_size, comment_size, disk, internal_attributes;
    std::uint32_t external_attributes, offset;
};

struct LocalHeader {
    std::uint32_t signature;
    std::uint16_t needed, flags, method;
    std::uint32_t time, crc, packed_size, size;
    std::uint16_t name_size, extra_size;
};

#pragma pack(pop)

static_assert(sizeof(EndRecord) == 22 && sizeof(CentralHeader) == 46 && sizeof(LocalHeader) == 30);

[[noreturn]] void Refuse(const std::string& reason) {
    throw Failure(reason, ExitCode::kCannotOpen);
}

// Takes `size` bytes off the front; nothing when there are not as many.
std::optional<std::string_view> Take(std::string_view& bytes, std::size_t size) {
    if (size > bytes.size()) return std::nullopt;
    const std::string_view taken = bytes.substr(0, size);
    bytes.remove_prefix(size);
    return taken;
}

template <class T>
std::optional<T> TakeRecord(std::string_view& bytes) {
    const std::optional<std::string_view> taken = Take(bytes, sizeof(T));
    if (!taken) return std::nullopt;
    T record;
    std::memcpy(&record, taken->data(), sizeof(T));
    return record;
}

// The record that ends the archive; `at` becomes its place. Only a comment may stand behind it.
EndRecord FindEnd(std::string_view archive, std::size_t& at) {
    constexpr std::size_t kLongestComment = 0xFFFF;
    for (std::size_t behind = 0; behind <= kLongestComment; ++behind) {
        if (sizeof(EndRecord) + behind > archive.size()) break;
        at = archive.size() - behind - sizeof(EndRecord);
        std::string_view rest = archive.substr(at);
        const std::optional<EndRecord> end = TakeRecord<EndRecord>(rest);
        if (end->signature == kEndSignature && end->comment_size == behind) return *end;
    }
    Refuse("the archive's end is missing");
}

std::string_view DirectoryOf(std::string_view archive, std::uint16_t& entries) {
    std::size_t at = 0;
    const EndRecord end = FindEnd(archive, at);
    if (end.entries == kNoRoom16 || end.directory_size == kNoRoom32 ||
        end.directory_offset == kNoRoom32) {
        Refuse("the archive has the form ZIP64, which is not read");
    }
    if (end.disk != 0 || end.directory_disk != 0 || end.entries_here != end.entries)
        Refuse("the archive is one of several parts");
    if (end.directory_offset > at || end.directory_size > at - end.directory_offset)
        Refuse("the archive's directory is damaged");
    entries = end.entries;
    return archive.substr(end.directory_offset, end.directory_size);
}

// Sets the entry's bytes; returns why that cannot be done, or nothing.
std::string Locate(std::string_view archive, const CentralHeader& header, ZipReader::Entry& entry) {
    if (header.packed_size == kNoRoom32 || header.size == kNoRoom32 || header.offset == kNoRoom32)
        return "it has the form ZIP64, which is not read";
    if ((header.flags & kEncrypted) != 0) return "it is encrypted";
    if (header.method != kStored && header.method != kDeflated) {
        return "it is compressed by method " + std::to_string(header.method) +
               ", which is not read";
    }
    if (header.size > kMostBytes) return "it is larger than 256 MiB";
    std::string_view rest = archive.substr(std::min<std::size_t>(header.offset, archive.size()));
    const std::optional<LocalHeader> local = TakeRecord<LocalHeader>(rest);
    if (!local || local->signature != kLocalSignature || local->method != header.method)
        return "its header is damaged";
    const std::optional<std::string_view> name = Take(rest, local->name_size);
    if (!name || *name != entry.name || !Take(rest, local->extra_size))
        return "its header is damaged";
    const std::optional<std::string_view> packed = Take(rest, header.packed_size);
    if (!packed) return "it passes the archive's end";
    entry.packed = *packed;
    const bool fits = header.method == kStored ? header.size == header.packed_size
                                               : header.size / kBestDeflate <= header.packed_size;
    return fits ? "" : "its size cannot be true";
}

ZipReader::Content Inflate(const ZipReader::Entry& entry) {
    ZipReader::Content content{std::string(entry.size, '\0'), ""};
    z_stream stream{};
    // Raw data, without a header of zlib's own. The input is only read.
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) throw Failure("out of memory");
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(entry.packed.data()));
    stream.avail_in = static_cast<uInt>(entry.packed.size());
    char none = 0;
    stream.next_out = reinterpret_cast<Bytef*>(entry.size == 0 ? &none : content.bytes.data());
    stream.avail_out = entry.size;
    const int result = inflate(&stream, Z_FINISH);
    const bool is_all = result == Z_STREAM_END && stream.avail_in == 0 && stream.avail_out == 0;
    content.bytes.resize(entry.size - stream.avail_out);
    inflateEnd(&stream);
    if (!is_all) {
        content.fault = result == Z_DATA_ERROR ? "its compressed data is damaged"
                                               : "its size is not the one that is stated";
    }
    return content;
}

}  // namespace

bool ZipReader::IsZip(std::string_view bytes) {
    const std::optional<std::uint32_t> signature = TakeRecord<std::uint32_t>(bytes);
    return signature == kLocalSignature || signature == kEndSignature;
}

ZipReader::ZipReader(std::string_view bytes) {
    std::uint16_t entries = 0;
    std::string_view directory = DirectoryOf(bytes, entries);
    for (; entries > 0; --entries) AddEntry(bytes, directory);
    RefuseOverlaps();
    RefuseTooMuch();
}

void ZipReader::AddEntry(std::string_view archive, std::string_view& directory) {
    const std::optional<CentralHeader> header = TakeRecord<CentralHeader>(directory);
    if (!header || header->signature != kCentralSignature)
        Refuse("the archive's directory is damaged");
    const std::optional<std::string_view> name = Take(directory, header->name_size);
    if (!name || !Take(directory, std::size_t{header->extra_size} + header->comment_size))
        Refuse("the archive's directory is damaged");
    if (name->ends_with('/')) return;
    Entry entry;
    entry.name = *name;
    entry.method = header->method;
    entry.crc = header->crc;
    entry.size = header->size;
    entry.fault = Locate(archive, *header, entry);
    entries_.push_back(entry);
}

void ZipReader::RefuseOverlaps() {
    std::vector<Entry*> by_place;
    for (Entry& entry : entries_)
        if (entry.fault.empty() && !entry.packed.empty()) by_place.push_back(&entry);
    std::ranges::sort(by_place, {}, [](const Entry* entry) { return entry->packed.data(); });
    const char* end = nullptr;
    for (Entry* entry : by_place) {
        if (end != nullptr && entry->packed.data() < end) {
            entry->fault = "it shares bytes with another entry";
        } else {
            end = entry->packed.data() + entry->packed.size();
        }
    }
}

void ZipReader::RefuseTooMuch() const {
    std::uint64_t together = 0;
    for (const Entry& entry : entries_) together += entry.fault.empty() ? entry.size : 0;
    if (together > kMostTogether) Refuse("the archive holds more than 2 GiB");
}

ZipReader::Content ZipReader::Read(const Entry& entry) {
    if (!entry.fault.empty()) return {"", entry.fault};
    Content content =
        entry.method == kStored ? Content{std::string(entry.packed), ""} : Inflate(entry);
    const auto* bytes = reinterpret_cast<const Bytef*>(content.bytes.data());
    const uLong crc = crc32(0, bytes, static_cast<uInt>(content.bytes.size()));
    if (content.fault.empty() && crc != entry.crc) content.fault = "its checksum is wrong";
    return content;
}

}  // namespace qv
