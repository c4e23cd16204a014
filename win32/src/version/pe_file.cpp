#include "version/pe_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/unique_fd.h"
#include "root/host_path.h"

namespace host {
namespace {

// Layout of an image, offsets in bytes.
constexpr std::uint16_t kDosMagic = 0x5A4D;     // "MZ"
constexpr std::uint64_t kDosNewHeader = 60;     // DWORD: offset of the PE header
constexpr std::uint32_t kPeMagic = 0x00004550;  // "PE\0\0"
constexpr std::uint64_t kPeSectionCount = 6;    // WORD, from the PE header
constexpr std::uint64_t kPeOptionalSize = 20;   // WORD
constexpr std::uint64_t kPeOptional = 24;       // the optional header
constexpr std::uint16_t kOptional32 = 0x10B;
constexpr std::uint16_t kOptional64 = 0x20B;
constexpr std::uint64_t kDirectories32 = 92;  // DWORD count, then the directories
constexpr std::uint64_t kDirectories64 = 108;
constexpr std::uint32_t kResourceDirectory = 2;
constexpr std::uint64_t kSectionSize = 40;
constexpr std::uint32_t kMostSections = 96;
constexpr std::uint32_t kVersionType = 16;
constexpr std::uint32_t kSubdirectory = 0x80000000;

struct Directory {  // IMAGE_DATA_DIRECTORY
    std::uint32_t address, size;
};
struct Section {  // IMAGE_SECTION_HEADER
    char name[8];
    std::uint32_t virtual_size, address, raw_size, raw_offset;
    std::uint8_t rest[16];
};
static_assert(sizeof(Section) == kSectionSize);
struct ResourceTable {  // IMAGE_RESOURCE_DIRECTORY
    std::uint32_t flags, time, version;
    std::uint16_t named, numbered;
};
struct ResourceEntry {  // IMAGE_RESOURCE_DIRECTORY_ENTRY
    std::uint32_t id, offset;
};
struct ResourceData {  // IMAGE_RESOURCE_DATA_ENTRY
    std::uint32_t address, size, code_page, reserved;
};

// Reads from an image by file offset and by address in memory; false beyond the end.
class Image {
  public:
    explicit Image(int fd) : fd_(fd) {}

    bool ReadAt(std::uint64_t offset, void* out, std::size_t bytes) const {
        auto* to = static_cast<BYTE*>(out);
        while (bytes > 0) {
            const ssize_t got = pread(fd_, to, bytes, static_cast<off_t>(offset));
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) return false;
            to += got;
            offset += static_cast<std::uint64_t>(got);
            bytes -= static_cast<std::size_t>(got);
        }
        return true;
    }
    template <class T>
    bool ReadAt(std::uint64_t offset, T& out) const {
        return ReadAt(offset, &out, sizeof out);
    }

    // Finds the sections and the resource directory.
    bool Open() {
        std::uint16_t magic = 0, sections = 0, optional_size = 0;
        std::uint32_t header = 0, pe_magic = 0;
        if (!ReadAt(0, magic) || magic != kDosMagic || !ReadAt(kDosNewHeader, header) ||
            !ReadAt(header, pe_magic) || pe_magic != kPeMagic ||
            !ReadAt(header + kPeSectionCount, sections) || sections > kMostSections ||
            !ReadAt(header + kPeOptionalSize, optional_size)) {
            return false;
        }
        sections_.resize(sections);
        const std::uint64_t optional = header + kPeOptional;
        return ReadAt(optional + optional_size, sections_.data(), sections * kSectionSize) &&
               FindResources(optional, optional_size);
    }

    // Reads at an address of the loaded image. Only the part of a section that is in the file can
    // be read.
    bool ReadLoaded(std::uint64_t address, void* out, std::size_t bytes) const {
        for (const Section& section : sections_) {
            if (address < section.address || address - section.address >= section.raw_size)
                continue;
            const std::uint64_t inside = address - section.address;
            return bytes <= section.raw_size - inside &&
                   ReadAt(section.raw_offset + inside, out, bytes);
        }
        return false;
    }

    // The entry of a resource table, `table` bytes into the resource directory: the one with this
    // number, or the first when `number` is 0.
    bool FindEntry(std::uint32_t table, std::uint32_t number, ResourceEntry& entry) const {
        ResourceTable header;
        if (!ReadResource(table, header)) return false;
        const std::uint32_t count = std::uint32_t{header.named} + header.numbered;
        for (std::uint32_t i = number == 0 ? 0 : header.named; i < count; ++i) {
            const std::uint64_t at = table + sizeof header + i * std::uint64_t{sizeof entry};
            if (!ReadResource(at, entry)) return false;
            if (number == 0 || entry.id == number) return true;
        }
        return false;
    }
    template <class T>
    bool ReadResource(std::uint64_t offset, T& out) const {
        return offset < resources_.size && sizeof out <= resources_.size - offset &&
               ReadLoaded(resources_.address + offset, &out, sizeof out);
    }

  private:
    bool FindResources(std::uint64_t optional, std::uint32_t optional_size) {
        std::uint16_t magic = 0;
        std::uint32_t count = 0;
        if (!ReadAt(optional, magic) || (magic != kOptional32 && magic != kOptional64))
            return false;
        const std::uint64_t directories = magic == kOptional32 ? kDirectories32 : kDirectories64;
        const std::uint64_t at =
            directories + sizeof count + kResourceDirectory * sizeof resources_;
        return at + sizeof resources_ <= optional_size && ReadAt(optional + directories, count) &&
               count > kResourceDirectory && ReadAt(optional + at, resources_) &&
               resources_.address != 0;
    }

    const int fd_;
    std::vector<Section> sections_;
    Directory resources_ = {};
};

// Three levels: type, name, language; the last leads to the data.
DWORD FindVersion(const Image& image, ResourceData& data) {
    ResourceEntry entry;
    if (!image.FindEntry(0, kVersionType, entry)) return ERROR_RESOURCE_TYPE_NOT_FOUND;
    for (int level = 0; level < 2; ++level) {
        if ((entry.offset & kSubdirectory) == 0 ||
            !image.FindEntry(entry.offset & ~kSubdirectory, 0, entry)) {
            return ERROR_RESOURCE_DATA_NOT_FOUND;
        }
    }
    const bool found =
        (entry.offset & kSubdirectory) == 0 && image.ReadResource(entry.offset, data);
    return found ? NO_ERROR : ERROR_RESOURCE_DATA_NOT_FOUND;
}

}  // namespace

DWORD ReadVersionResource(const std::string& path, std::vector<BYTE>& block) {
    constexpr std::uint32_t kLargest = 0x10000;
    const UniqueFd fd(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat info;
    if (!fd || fstat(fd.get(), &info) != 0) return PathError(errno, path);
    if (S_ISDIR(info.st_mode)) return ERROR_ACCESS_DENIED;
    Image image(fd.get());
    if (!S_ISREG(info.st_mode) || !image.Open()) return ERROR_RESOURCE_DATA_NOT_FOUND;
    ResourceData data;
    const DWORD error = FindVersion(image, data);
    if (error != NO_ERROR) return error;
    block.resize(std::min(data.size, kLargest));
    const bool read = image.ReadLoaded(data.address, block.data(), block.size());
    return read ? NO_ERROR : ERROR_RESOURCE_DATA_NOT_FOUND;
}

}  // namespace host
