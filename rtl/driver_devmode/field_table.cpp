#include "driver_devmode/field_table.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <memory>

#include "driver_devmode/field_rows.h"
#include "mox_classes/memory/module_static.h"

namespace driver_devmode {

namespace {

using TView = std::basic_string_view<WCHAR>;

struct TNamedRow {
    TView name;
    const TFieldInfo* row;
};

// The rows that have a name, in the order of the names.
template <const auto& kRows>
constexpr auto SortedByName() {
    constexpr auto kNamed = static_cast<std::size_t>(std::ranges::count_if(
        kRows, [](const TFieldInfo& row) { return row.Kind != FieldKind::Gap; }));
    std::array<TNamedRow, kNamed> sorted{};
    std::size_t count = 0;
    for (const TFieldInfo& row : kRows) {
        if (row.Kind != FieldKind::Gap) sorted[count++] = {row.Name, &row};
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
