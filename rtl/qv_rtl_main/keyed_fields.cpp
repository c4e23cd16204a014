#include "qv_rtl_main/keyed_fields.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "driver_devmode/field_rows.h"
#include "driver_devmode/named_field.h"
#include "mox_classes/containers/string_list.h"
#include "mox_classes/text/sysutils_numbers.h"

using namespace driver_devmode;

namespace qv_rtl_main {

namespace {

using TView = std::basic_string_view<WCHAR>;

constexpr bool HasKey(const TFieldInfo& row) {
    return row.Key.Name != nullptr;
}

constexpr auto kKeyedCount = static_cast<std::size_t>(
    std::ranges::count_if(kDevModeFields, HasKey) + std::ranges::count_if(kWrapperFields, HasKey));

constexpr auto kKeyed = [] {
    std::array<const TFieldInfo*, kKeyedCount> rows{};
    std::size_t count = 0;
    const auto add = [&](const auto& table) {
        for (const TFieldInfo& row : table)
            if (HasKey(row)) rows[count++] = &row;
    };
    add(kDevModeFields);
    add(kWrapperFields);
    std::ranges::sort(rows, {}, [](const TFieldInfo* row) { return row->Key.Place; });
    return rows;
}();

constexpr bool PlacesCount() {
    for (std::size_t i = 0; i < kKeyed.size(); ++i)
        if (kKeyed[i]->Key.Place != static_cast<int>(i) + 1) return false;
    return true;
}
static_assert(PlacesCount(), "the places of the keys are 1, 2, 3 and so on");
static_assert(std::ranges::all_of(kKeyed, [](const TFieldInfo* row) {
    return row->IsText() || row->Count == 1 || row->Key.Otherwise.has_value();
}));

TField FieldOf(TQVDM& wrapper, const TFieldInfo& row) {
    return FindNamedField(wrapper, {{}, row.Name});
}

// The numbers as they are stored: neither names nor words.
UnicodeString NumbersText(const TField& field) {
    UnicodeString text;
    for (int i = 0; i < field.row->Count; ++i) {
        if (i > 0) text += TEXT(",");
        text += UnicodeString(LoadElement(field, i));
    }
    return text;
}

constexpr WCHAR Lower(WCHAR unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<WCHAR>(unit - 'A' + 'a') : unit;
}

const TFieldInfo* FindKeyed(const UnicodeString& keyword) {
    const TView wanted(keyword.t_str(), static_cast<std::size_t>(keyword.Length()));
    const auto matches = [&wanted](const TFieldInfo* row) {
        return std::ranges::equal(TView(row->Key.Name), wanted, {}, Lower);
    };
    const auto* const found = std::ranges::find_if(kKeyed, matches);
    return found == kKeyed.end() ? nullptr : *found;
}

// A text with fewer numbers than the field has changes nothing.
void SetTolerant(const TField& field, const UnicodeString& value) {
    const int otherwise = *field.row->Key.Otherwise;
    if (field.row->Count == 1) {
        StoreElement(field, 0, Sysutils::StrToIntDef(value, otherwise));
        return;
    }
    TStringList list;
    TStrings& items = list;
    items.SetCommaText(value);
    if (items.GetCount() < field.row->Count) return;
    for (int i = 0; i < field.row->Count; ++i)
        StoreElement(field, i, Sysutils::StrToIntDef(items.Get(i), otherwise));
}

}  // namespace

void AppendKeyedFields(TQVDM& wrapper, UnicodeString& result) {
    for (const TFieldInfo* row : kKeyed) {
        const TField field = FieldOf(wrapper, *row);
        if (row != kKeyed.front()) result += TEXT("\t");
        result += row->Key.Name;
        result += TEXT("\t");
        result += row->IsText() ? ReadField(field) : NumbersText(field);
    }
}

bool TKeyedChanges::Take(const UnicodeString& keyword, const UnicodeString& value) {
    const TFieldInfo* row = FindKeyed(keyword);
    if (row == nullptr) return false;
    if (row->Key.Otherwise) {
        waiting_[row] = value;
    } else if (row->IsText()) {
        SetField(FieldOf(wrapper_, *row), value, nullptr);
    } else {
        StoreElement(FieldOf(wrapper_, *row), 0, Sysutils::StrToInt(value));
    }
    return true;
}

void TKeyedChanges::Finish() {
    for (const auto& [row, value] : waiting_) SetTolerant(FieldOf(wrapper_, *row), value);
    waiting_.clear();
}

}  // namespace qv_rtl_main
