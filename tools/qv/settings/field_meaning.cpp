#include "settings/field_meaning.h"

#include <algorithm>
#include <numeric>
#include <string_view>

namespace qv {

using driver_devmode::FieldKind;

namespace {

// A driver defines the values from here on for itself.
constexpr long long kDriversOwn = 256;

// 48 and 49 are reserved among the paper sizes.
bool IsReservedPaper(const Field& field, long long value) {
    return field.Values == driver_devmode::ValueTable::PaperSize && (value == 48 || value == 49);
}

std::vector<long long> ElementsOf(const SettingsBlock& block, const Field& field) {
    const driver_devmode::TField place{&field,
                                       const_cast<std::uint8_t*>(block.BytesOf(field).data())};
    std::vector<long long> elements(static_cast<std::size_t>(field.Count));
    for (int i = 0; i < field.Count; ++i)
        elements[static_cast<std::size_t>(i)] = LoadElement(place, i);
    return elements;
}

bool IsInside(const Field& field, long long value) {
    const driver_devmode::TRange& range = field.Range;
    if (value == 0 && (range.More & driver_devmode::kOrZero) != 0) return true;
    if (value >= kDriversOwn && (range.More & driver_devmode::kOrDriversOwn) != 0) return true;
    return value >= range.Low && value <= range.High && !IsReservedPaper(field, value);
}

std::string RangeFault(const Field& field, const std::vector<long long>& elements) {
    if (!field.Range.IsStated()) return "";
    for (const long long value : elements) {
        if (IsInside(field, value)) continue;
        return "the value " + std::to_string(value) + " has no meaning";
    }
    return "";
}

std::string BoolFault(const std::vector<long long>& elements) {
    const long long value = elements.front();
    return value == 0 || value == 1 ? ""
                                    : "the byte is " + std::to_string(value) + ", neither 0 nor 1";
}

std::string OwnRuleFault(const std::string& name, const std::vector<long long>& elements) {
    if (name == "exIPO.CriticalZone" || name == "exIPO.VisibleZone") {
        return elements[0] <= elements[1] ? "" : "the low bound lies above the high one";
    }
    if (name == "exIPO.ColorMixer") {
        const long long sum = std::accumulate(elements.begin(), elements.end(), 0LL);
        return sum == 100 ? "" : "the weights are " + std::to_string(sum) + " per cent together";
    }
    if (name == "dmFields") {
        DWORD known = 0;
        for (const Field* field : AllFields()) known |= field->Bit;
        const auto unknown = static_cast<DWORD>(elements[0]) & ~known;
        // Position, pixels and other fields that printers do not use have no names here.
        constexpr DWORD kOther = 0x207E00A0;
        return (unknown & ~kOther) == 0 ? "" : "a bit is set that stands for no field";
    }
    return "";
}

std::string TerminatorFault(const SettingsBlock& block, const Field& field) {
    const auto bytes = block.BytesOf(field);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        if (bytes[i] == 0 && bytes[i + 1] == 0) return "";
    return "the text has no end inside the field";
}

// Values that nobody set: those of a fresh block, and the resolution, which the driver computes.
bool IsUnset(const SettingsBlock& block, const Field& field) {
    QV_DEVMODE validated;
    validated.exFax = block.IsProduct() ? block.Block().exFax : validated.exFax;
    validated.Validate();
    const auto* derived = reinterpret_cast<const std::uint8_t*>(&validated);
    const SettingsBlock fresh;
    const auto bytes = block.BytesOf(field);
    const bool is_zero = std::ranges::all_of(bytes, [](std::uint8_t b) { return b == 0; });
    return is_zero || block.Get(field) == fresh.Get(field) ||
           std::equal(bytes.begin(), bytes.end(), derived + field.Offset);
}

// True for a public field whose bit in dmFields is clear.
bool LacksBit(const SettingsBlock& block, const Field& field) {
    return field.Bit != 0 && (block.Block().dmFields & field.Bit) == 0;
}

std::string ValueFaultOf(const SettingsBlock& block, const Field& field) {
    if (field.Kind == FieldKind::WideText) return TerminatorFault(block, field);
    const std::vector<long long> elements = ElementsOf(block, field);
    if (field.Kind == FieldKind::Bool8) return BoolFault(elements);
    const std::string fault = RangeFault(field, elements);
    return fault.empty() ? OwnRuleFault(NameOf(field), elements) : fault;
}

}  // namespace

std::string MeaningFault(const SettingsBlock& block, const Field& field) {
    if (field.Kind == FieldKind::String || field.Kind == FieldKind::AnsiText) return "";
    if (!LacksBit(block, field)) return ValueFaultOf(block, field);
    return IsUnset(block, field) ? "" : "dmFields does not have its bit: the value is not in force";
}

}  // namespace qv
