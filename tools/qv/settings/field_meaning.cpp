#include "settings/field_meaning.h"

#include <algorithm>
#include <numeric>
#include <string_view>

namespace qv {

using driver_devmode::FieldKind;

namespace {

// From here on the values of the public fields are a driver's own.
constexpr long long kDriversOwn = 256;
constexpr long long kNoLimit = 32767;

struct Range {
    const char* field;
    long long low, high;
    bool drivers_own;  // values from kDriversOwn on as well
    bool zero;         // 0 stands for "not set"
};

// For every element of the field.
constexpr Range kRanges[] = {
    {"dmOrientation", 1, 2, false, false},
    {"dmPaperSize", 1, 118, true, true},
    {"dmPaperLength", 1, kNoLimit, false, true},
    {"dmPaperWidth", 1, kNoLimit, false, true},
    {"dmScale", 1, kNoLimit, false, false},
    {"dmCopies", 1, kNoLimit, false, false},
    {"dmDefaultSource", 1, 15, true, false},
    {"dmPrintQuality", -4, kNoLimit, false, false},
    {"dmColor", 1, 2, false, false},
    {"dmDuplex", 1, 3, false, false},
    {"dmYResolution", 1, kNoLimit, false, true},
    {"dmTTOption", 1, 4, false, false},
    {"dmCollate", 0, 1, false, false},
    {"dmNup", 1, 2, false, true},
    {"dmICMMethod", 1, 4, true, true},
    {"dmICMIntent", 1, 4, true, true},
    {"dmMediaType", 1, 3, true, true},
    {"dmDitherType", 1, 10, true, true},
    {"dmReserved1", 0, 0, false, true},
    {"dmReserved2", 0, 0, false, true},
    {"exDialog.Mode", 0, 1, false, false},
    {"exFax.PaperSize", 1, 118, true, true},
    {"exFax.Resolution", 1, kNoLimit, false, false},
    {"exIPO.DitherMethod", 0, 3, false, false},
    {"exIPO.CP0", 0, 255, false, false},
    {"exIPO.CP1", 0, 255, false, false},
    {"exIPO.CP2", 0, 255, false, false},
    {"exIPO.CP3", 0, 255, false, false},
    {"exIPO.ColorMixer", 0, 100, false, false},
};

struct Bit {
    const char* field;
    DWORD bit;
};

// The bit of dmFields that puts a public field in force.
constexpr Bit kBits[] = {
    {"dmOrientation", DM_ORIENTATION},
    {"dmPaperSize", DM_PAPERSIZE},
    {"dmPaperLength", DM_PAPERLENGTH},
    {"dmPaperWidth", DM_PAPERWIDTH},
    {"dmScale", DM_SCALE},
    {"dmCopies", DM_COPIES},
    {"dmDefaultSource", DM_DEFAULTSOURCE},
    {"dmPrintQuality", DM_PRINTQUALITY},
    {"dmColor", DM_COLOR},
    {"dmDuplex", DM_DUPLEX},
    {"dmYResolution", DM_YRESOLUTION},
    {"dmTTOption", DM_TTOPTION},
    {"dmCollate", DM_COLLATE},
    {"dmFormName", DM_FORMNAME},
    {"dmNup", DM_NUP},
    {"dmICMMethod", DM_ICMMETHOD},
    {"dmICMIntent", DM_ICMINTENT},
    {"dmMediaType", DM_MEDIATYPE},
    {"dmDitherType", DM_DITHERTYPE},
    {"dmPanningWidth", DM_PANNINGWIDTH},
    {"dmPanningHeight", DM_PANNINGHEIGHT},
};

// 48 and 49 are reserved among the paper sizes.
bool IsReservedPaper(const Field& field, long long value) {
    return field.Values == driver_devmode::ValueTable::PaperSize && (value == 48 || value == 49);
}

std::vector<long long> ElementsOf(const SettingsBlock& block, const Field& field) {
    std::vector<long long> elements;
    const auto bytes = block.BytesOf(field);
    const bool is_signed = field.Kind == FieldKind::Int8 || field.Kind == FieldKind::Int16;
    for (std::size_t at = 0; at < bytes.size(); at += static_cast<std::size_t>(field.Size)) {
        long long value = 0;
        for (int i = field.Size - 1; i >= 0; --i)
            value = value * 256 + bytes[at + static_cast<std::size_t>(i)];
        const long long half = 1LL << (field.Size * 8 - 1);
        elements.push_back(is_signed && value >= half ? value - 2 * half : value);
    }
    return elements;
}

bool IsInside(const Range& range, const Field& field, long long value) {
    if (value == 0 && range.zero) return true;
    if (range.drivers_own && value >= kDriversOwn) return true;
    return value >= range.low && value <= range.high && !IsReservedPaper(field, value);
}

std::string RangeFault(const Field& field, const std::string& name,
                       const std::vector<long long>& elements) {
    const auto* const range = std::ranges::find(kRanges, std::string_view(name), &Range::field);
    if (range == std::end(kRanges)) return "";
    for (const long long value : elements) {
        if (IsInside(*range, field, value)) continue;
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
        for (const Bit& b : kBits) known |= b.bit;
        const auto unknown = static_cast<DWORD>(elements[0]) & ~known;
        // Bits of fields that printers do not use have no names here: position, pixels and others.
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

// Values that a block carries without meaning to set them: what a fresh one has, and the
// resolution that the driver derives for itself.
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

// Whether dmFields says nothing of a public field that it could speak of.
bool LacksBit(const SettingsBlock& block, const std::string& name) {
    const auto* const bit = std::ranges::find(kBits, std::string_view(name), &Bit::field);
    return bit != std::end(kBits) && (block.Block().dmFields & bit->bit) == 0;
}

std::string ValueFaultOf(const SettingsBlock& block, const Field& field, const std::string& name) {
    if (field.Kind == FieldKind::WideText) return TerminatorFault(block, field);
    const std::vector<long long> elements = ElementsOf(block, field);
    if (field.Kind == FieldKind::Bool8) return BoolFault(elements);
    const std::string fault = RangeFault(field, name, elements);
    return fault.empty() ? OwnRuleFault(name, elements) : fault;
}

}  // namespace

std::string MeaningFault(const SettingsBlock& block, const Field& field) {
    if (field.Kind == FieldKind::String || field.Kind == FieldKind::AnsiText) return "";
    const std::string name = NameOf(field);
    if (!LacksBit(block, name)) return ValueFaultOf(block, field, name);
    return IsUnset(block, field) ? "" : "dmFields does not have its bit: the value is not in force";
}

}  // namespace qv
