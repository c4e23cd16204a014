// One settings block in memory and its fields by name.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "driver_devmode/field_text.h"
#include "driver_devmode/qvdm.h"
#include "settings/fields.h"

namespace qv {

// Owns a copy of the bytes. The copy has room for a whole block of the product, so that a block
// that is too short can be read. A block of another driver has only the public fields that lie
// within its own size. One thread at a time.
class SettingsBlock {
  public:
    // The product's defaults.
    SettingsBlock();
    explicit SettingsBlock(std::span<const std::uint8_t> bytes);
    SettingsBlock(SettingsBlock&&) = default;
    SettingsBlock& operator=(SettingsBlock&&) = default;
    SettingsBlock Copy() const;

    // True for a complete, valid block of the product (4400 bytes).
    bool IsProduct() const { return wrapper_ != nullptr; }
    // The number of bytes that were given.
    int Size() const { return size_; }
    QV_DEVMODE& Block() const { return *reinterpret_cast<QV_DEVMODE*>(memory_.get()); }
    // The bytes of a field. The field must not be one of the strings in the pool.
    std::span<const std::uint8_t> BytesOf(const Field& field) const;

    bool Has(const Field& field) const;
    // The text of a field that the block has, cut to the longest text that can be set.
    UnicodeString Get(const Field& field) const;
    // Sets a field to a text that ValueFault accepts. Returns the error, or an empty text.
    std::string Set(const Field& field, const UnicodeString& text);
    // Writes the strings back into the block. Returns why it must not be stored, or an empty text.
    std::string Finish();

  private:
    driver_devmode::TField Place(const Field& field) const;

    std::unique_ptr<std::uint8_t[]> memory_;
    int size_ = 0;
    int public_size_ = 0;             // bytes, for a block of another driver
    std::unique_ptr<TQVDM> wrapper_;  // for a block of the product, else null
};

// A field that differs between two blocks, or that the user wants to change.
struct FieldChange {
    const Field* field;
    UnicodeString before, after;

    bool IsChange() const { return before != after; }
};

// The fields that both blocks have and that differ.
std::vector<FieldChange> Differences(const SettingsBlock& before, const SettingsBlock& after);

}  // namespace qv
