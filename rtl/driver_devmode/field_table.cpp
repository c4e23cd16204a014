#include "driver_devmode/field_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>

#include "driver_devmode/qv_devmode.h"
#include "mox_classes/memory/module_static.h"

namespace driver_devmode {

namespace {

using enum FieldKind;

constexpr int SizeOf(FieldKind kind) {
    switch (kind) {
        case Int16:
        case UInt16:
        case WideText:
            return 2;
        case UInt32:
            return 4;
        case String:
            return sizeof(UnicodeString);
        default:
            return 1;
    }
}

constexpr TFieldInfo Field(const WCHAR* name, FieldKind kind, int count = 1,
                           ValueTable values = ValueTable::None) {
    return {name, kind, true, SizeOf(kind), count, values, 0};
}

constexpr TFieldInfo Unlisted(const WCHAR* name, FieldKind kind, int count = 1) {
    return {name, kind, false, SizeOf(kind), count, ValueTable::None, 0};
}

constexpr TFieldInfo Bytes(int count) {
    return {TEXT(""), Gap, false, 1, count, ValueTable::None, 0};
}

template <std::size_t N>
constexpr std::array<TFieldInfo, N> WithOffsets(std::array<TFieldInfo, N> rows) {
    int offset = 0;
    for (TFieldInfo& row : rows) {
        row.Offset = offset;
        offset = row.End();
    }
    return rows;
}

constexpr auto kDevModeFields = WithOffsets(std::to_array<TFieldInfo>({
    Unlisted(TEXT("dmDeviceName"), WideText, CCHDEVICENAME),
    Unlisted(TEXT("dmSpecVersion"), UInt16),
    Unlisted(TEXT("dmDriverVersion"), UInt16),
    Unlisted(TEXT("dmSize"), UInt16),
    Unlisted(TEXT("dmDriverExtra"), UInt16),
    Field(TEXT("dmFields"), UInt32),
    Field(TEXT("dmOrientation"), Int16, 1, ValueTable::Orientation),
    Field(TEXT("dmPaperSize"), Int16, 1, ValueTable::PaperSize),
    Field(TEXT("dmPaperLength"), Int16),
    Field(TEXT("dmPaperWidth"), Int16),
    Field(TEXT("dmScale"), Int16),
    Field(TEXT("dmCopies"), Int16),
    Field(TEXT("dmDefaultSource"), Int16),
    Field(TEXT("dmPrintQuality"), Int16, 1, ValueTable::PrintQuality),
    Field(TEXT("dmColor"), Int16),
    Field(TEXT("dmDuplex"), Int16),
    Field(TEXT("dmYResolution"), Int16),
    Field(TEXT("dmTTOption"), Int16),
    Field(TEXT("dmCollate"), Int16),
    Field(TEXT("dmFormName"), WideText, CCHFORMNAME),
    Field(TEXT("dmLogPixels"), UInt16),
    Field(TEXT("dmBitsPerPel"), UInt32),
    Field(TEXT("dmPelsWidth"), UInt32),
    Field(TEXT("dmPelsHeight"), UInt32),
    Field(TEXT("dmNup"), UInt32),
    Field(TEXT("dmDisplayFrequency"), UInt32),
    Field(TEXT("dmICMMethod"), UInt32),
    Field(TEXT("dmICMIntent"), UInt32),
    Field(TEXT("dmMediaType"), UInt32),
    Field(TEXT("dmDitherType"), UInt32),
    Field(TEXT("dmReserved1"), UInt32),
    Field(TEXT("dmReserved2"), UInt32),
    Field(TEXT("dmPanningWidth"), UInt32),
    Field(TEXT("dmPanningHeight"), UInt32),
    Unlisted(TEXT("exID"), AnsiText, QV_DEVMODE_EXTRA::kIdSize),
    Unlisted(TEXT("exVersion"), UInt16),
    Field(TEXT("exDialog.Mode"), UInt8, 1, ValueTable::DialogMode),
    Field(TEXT("exFax.PaperSize"), Int16, 1, ValueTable::PaperSize),
    Field(TEXT("exFax.Resolution"), Int16, 2),
    Field(TEXT("exOut.UseDocNameAsFileName"), Bool8),
    Field(TEXT("exOut.UseSerial"), Bool8),
    Field(TEXT("exOut.RememberLastDir"), Bool8),
    Bytes(4),  // the offsets of exOut.Directory and exOut.FileName
    Field(TEXT("exRun.Enabled"), Bool8),
    Bytes(2),  // the offset of exRun.Target
    Field(TEXT("exLayout.CenterHorizontal"), Bool8),
    Field(TEXT("exLayout.CenterVertical"), Bool8),
    Field(TEXT("exLayout.DeleteEmptyPage"), Bool8),
    Field(TEXT("exLayout.DeleteTrailedSpace"), Bool8),
    Field(TEXT("exLayout.ShrinkIfLarge"), Bool8),
    Field(TEXT("exLayout.GrowIfSmall"), Bool8),
    Field(TEXT("exIPO.DitherMethod"), Int8, 1, ValueTable::DitherMethod),
    Field(TEXT("exIPO.Active"), Bool8),
    Bytes(2),
    Field(TEXT("exIPO.Contrast"), Int8),
    Field(TEXT("exIPO.Brightness"), Int8),
    Bytes(6),
    Field(TEXT("exIPO.CP0"), Int16, 2),
    Field(TEXT("exIPO.CP1"), Int16, 2),
    Field(TEXT("exIPO.CP2"), Int16, 2),
    Field(TEXT("exIPO.CP3"), Int16, 2),
    Field(TEXT("exIPO.CriticalZone"), UInt8, 2),
    Field(TEXT("exIPO.VisibleZone"), UInt8, 2),
    Bytes(4),
    Field(TEXT("exIPO.ColorMixer"), UInt8, 3),
    Bytes(1),
    Bytes(6),
}));
static_assert(kDevModeFields.back().End() ==
              QV_DEVMODE_EXTRA::kPublicSize + offsetof(QV_DEVMODE_EXTRA, exPool));

// Several numbers in one field are plain ones: their text is put together without a look at names.
static_assert(std::ranges::all_of(kDevModeFields, [](const TFieldInfo& row) {
    const bool is_plain = row.Kind != Bool8 && row.Values == ValueTable::None;
    return row.IsText() || row.Kind == Gap || row.Count == 1 ||
           (is_plain && row.Count <= kMostElements);
}));

constexpr auto kWrapperFields = WithOffsets(std::to_array<TFieldInfo>({
    Unlisted(TEXT("DeviceName"), String),
    Unlisted(TEXT("FormName"), String),
    Field(TEXT("exOut.Directory"), String),
    Field(TEXT("exOut.FileName"), String),
    Field(TEXT("exRun.Target"), String),
}));

using TView = std::basic_string_view<WCHAR>;

struct TNamedRow {
    TView name;
    const TFieldInfo* row;
};

// The rows that have a name, in the order of the names.
template <const auto& kRows>
constexpr auto SortedByName() {
    constexpr auto kNamed = static_cast<std::size_t>(
        std::ranges::count_if(kRows, [](const TFieldInfo& row) { return row.Kind != Gap; }));
    std::array<TNamedRow, kNamed> sorted{};
    std::size_t count = 0;
    for (const TFieldInfo& row : kRows) {
        if (row.Kind != Gap) sorted[count++] = {row.Name, &row};
    }
    std::ranges::sort(sorted, {}, &TNamedRow::name);
    return sorted;
}

constexpr auto kDevModeByName = SortedByName<kDevModeFields>();
constexpr auto kWrapperByName = SortedByName<kWrapperFields>();

// Compares a row's name with "group.leaf", or with the leaf alone.
int Compare(TView row, const TFieldName& wanted) {
    if (wanted.group.empty()) return row.compare(wanted.leaf);
    const std::size_t length = wanted.group.size();
    const int groups = row.compare(0, length, wanted.group);
    if (groups != 0) return groups;
    if (row.size() == length) return -1;
    if (row[length] != '.') return row[length] < '.' ? -1 : 1;
    return row.compare(length + 1, TView::npos, wanted.leaf);
}

const TFieldInfo* FindByName(std::span<const TNamedRow> sorted, const TFieldName& name) {
    const auto at = std::lower_bound(sorted.begin(), sorted.end(), name,
                                     [](const TNamedRow& row, const TFieldName& wanted) {
                                         return Compare(row.name, wanted) < 0;
                                     });
    return at != sorted.end() && Compare(at->name, name) == 0 ? at->row : nullptr;
}

using TAllStrings = std::array<TFieldStrings, kDevModeFields.size() + kWrapperFields.size()>;

void AddStrings(std::span<const TFieldInfo> rows, TFieldStrings* strings) {
    const UnicodeString* group = nullptr;
    for (const TFieldInfo& row : rows) {
        TFieldStrings& made = *strings++;
        made.name = row.Name;
        const int dot = made.name.Pos(TEXT("."));
        made.leaf = made.name.SubString(dot + 1, made.name.Length());
        if (dot == 0) continue;
        made.group = made.name.SubString(1, dot - 1);
        if (group != nullptr && *group == made.group) made.group = *group;
        group = &made.group;
    }
}

std::unique_ptr<TAllStrings> MakeStrings() {
    auto strings = std::make_unique<TAllStrings>();
    AddStrings(kDevModeFields, strings->data());
    AddStrings(kWrapperFields, strings->data() + kDevModeFields.size());
    return strings;
}

}  // namespace

std::span<const TFieldInfo> DevModeFields() {
    return kDevModeFields;
}

std::span<const TFieldInfo> WrapperFields() {
    return kWrapperFields;
}

const TFieldInfo* FindDevModeField(const TFieldName& name) {
    return FindByName(kDevModeByName, name);
}

const TFieldInfo* FindWrapperField(const TFieldName& name) {
    return FindByName(kWrapperByName, name);
}

const TFieldStrings& StringsOf(const TFieldInfo& row) {
    static const TAllStrings& strings = System::KeepUntilUnload(MakeStrings());
    const std::less<> before;
    const TFieldInfo* const first = kDevModeFields.data();
    const bool is_block = !before(&row, first) && before(&row, first + kDevModeFields.size());
    return is_block ? strings[static_cast<std::size_t>(&row - first)]
                    : strings[kDevModeFields.size() +
                              static_cast<std::size_t>(&row - kWrapperFields.data())];
}

}  // namespace driver_devmode
