#include "settings/settings_block.h"

#include <algorithm>
#include <cstring>

#include "driver_devmode/named_field.h"

namespace qv {

using driver_devmode::FieldKind;

namespace {

std::span<const std::uint8_t> BytesOfBlock(const DEVMODEW& block) {
    return {reinterpret_cast<const std::uint8_t*>(&block), sizeof(QV_DEVMODE)};
}

}  // namespace

SettingsBlock::SettingsBlock() : SettingsBlock(BytesOfBlock(*TQVDM().GetDM())) {}

SettingsBlock::SettingsBlock(std::span<const std::uint8_t> bytes)
    : memory_(std::make_unique<std::uint8_t[]>(std::max(bytes.size(), sizeof(QV_DEVMODE)))),
      size_(static_cast<int>(bytes.size())) {
    std::ranges::copy(bytes, memory_.get());
    if (QV_DEVMODE::IsValidQV_DEVMODE(&Block(), size_)) {
        wrapper_ = std::make_unique<TQVDM>(&Block());
        return;
    }
    constexpr int kWhole = QV_DEVMODE_EXTRA::kPublicSize;
    const int stated = Block().dmSize == 0 ? kWhole : Block().dmSize;
    public_size_ = std::min({stated, size_, kWhole});
}

SettingsBlock SettingsBlock::Copy() const {
    return SettingsBlock(
        std::span<const std::uint8_t>(memory_.get(), static_cast<std::size_t>(size_)));
}

std::span<const std::uint8_t> SettingsBlock::BytesOf(const Field& field) const {
    return {memory_.get() + field.Offset, static_cast<std::size_t>(field.Size * field.Count)};
}

bool SettingsBlock::Has(const Field& field) const {
    return IsProduct() || (IsPublic(field) && field.End() <= public_size_);
}

driver_devmode::TField SettingsBlock::Place(const Field& field) const {
    if (wrapper_ != nullptr) return driver_devmode::FindNamedField(*wrapper_, NameToSet(field));
    return {&field, memory_.get() + field.Offset};
}

UnicodeString SettingsBlock::Get(const Field& field) const {
    const UnicodeString text = driver_devmode::ReadField(Place(field));
    return field.Kind == FieldKind::WideText ? text.SubString(1, field.Count - 1) : text;
}

std::string SettingsBlock::Set(const Field& field, const UnicodeString& text) {
    if (!Has(field)) return "the block has no such field";
    if (IsLayout(field)) {
        const bool is_same = Get(field) == text;
        return is_same ? "" : "it says how the block is laid out, and is " + OneLine(Get(field));
    }
    return driver_devmode::SetField(Place(field), text, nullptr) ? "" : "no value of the field";
}

std::string SettingsBlock::Finish() {
    if (wrapper_ == nullptr) return "";
    if (!wrapper_->Encode()) return "the three texts of the private part are too long together";
    return QV_DEVMODE::IsValidQV_DEVMODE(&Block(), size_)
               ? ""
               : "it would be no block of the product any more";
}

std::vector<FieldChange> Differences(const SettingsBlock& before, const SettingsBlock& after) {
    std::vector<FieldChange> changes;
    for (const Field* field : AllFields()) {
        if (!before.Has(*field) || !after.Has(*field)) continue;
        FieldChange change = {field, before.Get(*field), after.Get(*field)};
        if (change.IsChange()) changes.push_back(std::move(change));
    }
    return changes;
}

}  // namespace qv
