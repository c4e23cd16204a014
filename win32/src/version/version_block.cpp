#include "version/version_block.h"

#include <algorithm>
#include <cstring>

namespace host {
namespace {

struct Header {
    std::uint16_t size, value_size, type;
};

constexpr std::size_t AlignUp(std::size_t offset) {
    return (offset + 3) & ~std::size_t{3};
}

char16_t Lower(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 0x20) : unit;
}

}  // namespace

std::optional<VersionBlock> VersionBlock::At(const BYTE* bytes, std::size_t size,
                                             std::size_t offset) {
    Header header;
    if (offset > size || size - offset < sizeof header) return std::nullopt;
    std::memcpy(&header, bytes + offset, sizeof header);
    if (header.size < sizeof header || header.size > size - offset) return std::nullopt;
    VersionBlock block;
    block.bytes_ = bytes;
    block.end_ = offset + header.size;
    block.key_ = offset + sizeof header;
    std::size_t at = block.key_;
    for (; at + sizeof(char16_t) <= block.end_ && block.Unit(at) != 0; ++block.key_units_) {
        at += sizeof(char16_t);
    }
    if (at + sizeof(char16_t) > block.end_) return std::nullopt;
    block.value_ = AlignUp(at + sizeof(char16_t));
    block.value_size_ = header.value_size;
    block.is_text_ = header.type == 1;
    return block;
}

char16_t VersionBlock::Unit(std::size_t offset) const {
    char16_t unit;
    std::memcpy(&unit, bytes_ + offset, sizeof unit);
    return unit;
}

bool VersionBlock::HasKey(std::u16string_view key) const {
    if (key.size() != key_units_) return false;
    for (std::size_t i = 0; i < key.size(); ++i) {
        if (Lower(key[i]) != Lower(Unit(key_ + i * sizeof(char16_t)))) return false;
    }
    return true;
}

// Most compilers count the value of a text in characters, some in bytes. The result is never more
// than the rest of the block.
std::size_t VersionBlock::ValueBytes() const {
    const std::size_t room = value_ < end_ ? end_ - value_ : 0;
    return std::min(room, std::size_t{value_size_} * (is_text_ ? sizeof(char16_t) : 1));
}

std::optional<VersionBlock> VersionBlock::Child(std::u16string_view key) const {
    std::size_t at = AlignUp(value_ + ValueBytes());
    while (const std::optional<VersionBlock> child = At(bytes_, end_, at)) {
        if (child->HasKey(key)) return child;
        at = AlignUp(child->end_);
    }
    return std::nullopt;
}

const BYTE* VersionBlock::Value(UINT& size) const {
    const std::size_t bytes = ValueBytes();
    if (!is_text_) {
        if (bytes < value_size_) return nullptr;
        size = value_size_;
        return bytes_ + std::min(value_, end_);
    }
    for (std::size_t at = 0; at + sizeof(char16_t) <= bytes; at += sizeof(char16_t)) {
        if (Unit(value_ + at) == 0) {
            size = static_cast<UINT>(at / sizeof(char16_t) + 1);
            return bytes_ + value_;
        }
    }
    return nullptr;
}

}  // namespace host
