// The bytes of a small PE image whose only content is a version resource.
#pragma once

#include <cstddef>
#include <string>

namespace test {

// Offsets in the file that tests damage.
constexpr std::size_t kImageHeaderAt = 60;
constexpr std::size_t kImageSections = 0x46;
constexpr std::size_t kImageTypeCount = 0x200 + 14;
constexpr std::size_t kImageTypeId = 0x200 + 16;
constexpr std::size_t kImageDataSize = 0x200 + 76;
constexpr std::size_t kImageVersion = 0x200 + 88;

inline void Put(std::string& bytes, std::size_t at, unsigned long long value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
}

// A version block: header, key, value, then the children.
inline std::string VersionBlock(const std::u16string& key, const std::string& value,
                                bool text = false, const std::string& children = {}) {
    std::string block(6, '\0');
    for (const char16_t unit : key + u'\0') {
        block += static_cast<char>(unit & 0xFF);
        block += static_cast<char>(unit >> 8);
    }
    block.resize((block.size() + 3) / 4 * 4);
    block += value;
    if (!children.empty()) block.resize((block.size() + 3) / 4 * 4);
    block += children;
    Put(block, 0, block.size(), 2);
    Put(block, 2, text ? value.size() / 2 : value.size(), 2);
    Put(block, 4, text ? 1 : 0, 2);
    return block;
}

// Version 1.2.3.4, English (US) in Unicode, "CompanyName" = "Qv".
inline std::string SampleVersion() {
    std::string fixed(52, '\0');
    Put(fixed, 0, 0xFEEF04BD, 4);
    Put(fixed, 4, 0x00010000, 4);
    Put(fixed, 8, 0x00010002, 4);
    Put(fixed, 12, 0x00030004, 4);
    const std::string name = VersionBlock(u"CompanyName", std::string("Q\0v\0\0\0", 6), true);
    std::string strings =
        VersionBlock(u"StringFileInfo", "", true, VersionBlock(u"040904B0", "", true, name));
    strings.resize((strings.size() + 3) / 4 * 4);
    const std::string languages = VersionBlock(u"Translation", std::string("\x09\x04\xB0\x04", 4));
    return VersionBlock(u"VS_VERSION_INFO", fixed, false,
                        strings + VersionBlock(u"VarFileInfo", "", true, languages));
}

inline void PutResourceTable(std::string& image, std::size_t at, unsigned id, unsigned offset) {
    Put(image, at + 14, 1, 2);
    Put(image, at + 16, id, 4);
    Put(image, at + 20, offset, 4);
}

// One section ".rsrc" at file offset 0x200 and address 0x1000 that holds type 16, name 1, US
// English.
inline std::string SmallImage(bool wide, const std::string& version = SampleVersion()) {
    std::string image(0x200, '\0');
    const std::size_t optional_size = wide ? 240 : 224, optional = 0x40 + 24;
    const std::size_t directories = optional + (wide ? 108 : 92),
                      section = optional + optional_size;
    const std::size_t raw_size = (88 + version.size() + 0x1FF) / 0x200 * 0x200;
    image.replace(0, 2, "MZ");
    Put(image, kImageHeaderAt, 0x40, 4);
    image.replace(0x40, 2, "PE");
    Put(image, 0x44, wide ? 0x8664 : 0x14C, 2);
    Put(image, kImageSections, 1, 2);
    Put(image, 0x54, optional_size, 2);
    Put(image, 0x56, wide ? 0x2022 : 0x2102, 2);
    Put(image, optional, wide ? 0x20B : 0x10B, 2);
    Put(image, optional + (wide ? 24 : 28), 0x400000, wide ? 8 : 4);
    Put(image, optional + 32, 0x1000, 4);
    Put(image, optional + 36, 0x200, 4);
    Put(image, optional + 40, 4, 2);
    Put(image, optional + 48, 4, 2);
    Put(image, optional + 56, 0x1000 + (raw_size + 0xFFF) / 0x1000 * 0x1000, 4);
    Put(image, optional + 60, 0x200, 4);
    Put(image, optional + 68, 2, 2);
    Put(image, directories, 16, 4);
    Put(image, directories + 4 + 16, 0x1000, 4);
    Put(image, directories + 4 + 20, 88 + version.size(), 4);
    image.replace(section, 5, ".rsrc");
    Put(image, section + 8, 88 + version.size(), 4);
    Put(image, section + 12, 0x1000, 4);
    Put(image, section + 16, raw_size, 4);
    Put(image, section + 20, 0x200, 4);
    Put(image, section + 36, 0x40000040, 4);
    image.resize(0x200 + raw_size);
    PutResourceTable(image, 0x200, 16, 0x80000000 + 24);
    PutResourceTable(image, 0x200 + 24, 1, 0x80000000 + 48);
    PutResourceTable(image, 0x200 + 48, 0x409, 72);
    Put(image, 0x200 + 72, 0x1000 + 88, 4);
    Put(image, kImageDataSize, version.size(), 4);
    image.replace(kImageVersion, version.size(), version);
    return image;
}

}  // namespace test
