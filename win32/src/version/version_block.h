// The tree of blocks inside a version resource.
//
// Each block is: WORD size of the whole, WORD size of the value, WORD 1 for text, the key with its
// terminator, the value and the children, both at multiples of 4 from the resource's start.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace host {

// A checked window on one block. The bytes must outlive it; nothing outside them is looked at.
class VersionBlock {
  public:
    // The block at `offset` of `size` bytes at `bytes`; none when it does not fit in them.
    static std::optional<VersionBlock> At(const BYTE* bytes, std::size_t size, std::size_t offset);

    // Without regard to the case of ASCII letters.
    bool HasKey(std::u16string_view key) const;
    std::optional<VersionBlock> Child(std::u16string_view key) const;

    // Where the value is, and its size: in characters, terminator included, for text, else in
    // bytes. Null for text without a terminator and for a block that is cut short.
    const BYTE* Value(UINT& size) const;

  private:
    std::size_t ValueBytes() const;
    char16_t Unit(std::size_t offset) const;

    const BYTE* bytes_ = nullptr;
    std::size_t end_ = 0;  // of the block; like all offsets from the resource's start
    std::size_t key_ = 0;
    std::size_t key_units_ = 0;
    std::size_t value_ = 0;
    std::uint16_t value_size_ = 0;
    bool is_text_ = false;
};

}  // namespace host
