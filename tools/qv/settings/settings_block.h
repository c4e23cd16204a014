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

// Owns a copy of the bytes with room for a whole block of the product behind them, so that a block
// that is too short can be looked at. Of a block that is not the product's only the public fields
// that its own size covers are there. One thread at a time.
class SettingsBlock {
  public:
    // The product's defaults.
    SettingsBlock();
    explicit SettingsBlock(std::span<const std::uint8_t> bytes);
    SettingsBlock(SettingsBlock&&) = default;
    SettingsBlock& operator=(SettingsBlock&&) = default;
    SettingsBlock Copy() const;

    // A valid block of the product, the 4400 bytes whole.
    bool IsProduct() const { return wrapper_ != nullptr; }
    // Bytes that were given.
    int Size() const { return size_; }
    QV_DEVMODE& Block() const { return *reinterpret_cast<QV_DEVMODE*>(memory_.get()); }
    // The bytes behind a field of the block; the field must not be one of the pool's strings.
    std::span<const std::uint8_t> BytesOf(const Field& field) const;

    bool Has(const Field& field) const;
    // The text of a field that is there, cut to what the field can be given.
    UnicodeString Get(const Field& field) const;
    // Changes a field to a text that ValueFault has passed. Returns why not, or nothing.
    std::string Set(const Field& field, const UnicodeString& text);
    // Writes the strings back into the block. Returns why it must not be stored, or nothing.
    std::string Finish();

  private:
    driver_devmode::TField Place(const Field& field) const;

    std::unique_ptr<std::uint8_t[]> memory_;
    int size_ = 0;
    int public_size_ = 0;             // of a block that is not the product's
    std::unique_ptr<TQVDM> wrapper_;  // of a block that is
};

// A field whose text differs between two blocks, or was asked to change.
struct FieldChange {
    const Field* field;
    UnicodeString before, after;

    bool IsChange() const { return before != after; }
};

// The fields of both blocks that differ.
std::vector<FieldChange> Differences(const SettingsBlock& before, const SettingsBlock& after);

}  // namespace qv
