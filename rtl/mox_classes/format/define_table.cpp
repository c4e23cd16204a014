#include "mox_classes/format/define_table.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

#include "mox_classes/containers/string_list.h"
#include "mox_classes/text/sysutils_numbers.h"

namespace {

constexpr WCHAR kFlagSeparator = '|';
constexpr std::size_t kRowSize = sizeof(TDefineInfo);
constexpr std::size_t kNameOffset = 4;
static_assert(kRowSize == kNameOffset + sizeof(UnicodeString));

// A string that is copied from or to a row as bytes. The name in a row is not aligned, so it has no
// address that a reference could take.
union TNameSlot {
    TNameSlot() : none(nullptr) {}
    ~TNameSlot() {}  // NOLINT(modernize-use-equals-default): would be deleted, the name has one
    const void* none;
    UnicodeString name;
};

void* NamePlace(std::byte* rows, std::size_t row) {
    return rows + row * kRowSize + kNameOffset;
}

// Walks the value rows of a table; a null table has none. Most rows are passed over, so a row's
// name is compared where it lies and no string is made of it.
class TRows {
  public:
    explicit TRows(const TDefineInfo* table) : next_(reinterpret_cast<const std::byte*>(table)) {
        if (table != nullptr) first_value_ = Read(prefix_);
    }

    bool IsFlagSet() const { return first_value_ != 0; }
    const UnicodeString& Prefix() const { return prefix_.name; }
    // False after the last value row.
    bool Next() {
        if (next_ == nullptr) return false;
        value_ = Read(row_);
        if (!row_.name.IsEmpty()) return true;
        next_ = nullptr;
        return false;
    }
    std::int32_t Value() const { return value_; }
    const UnicodeString& Name() const { return row_.name; }

  private:
    std::int32_t Read(TNameSlot& name) {
        std::int32_t value;
        std::memcpy(&value, next_, sizeof value);
        std::memcpy(static_cast<void*>(&name.name), next_ + kNameOffset, sizeof name.name);
        next_ += kRowSize;
        return value;
    }

    const std::byte* next_;
    std::int32_t first_value_ = 0;
    std::int32_t value_ = 0;
    TNameSlot prefix_;
    TNameSlot row_;
};

using TView = std::basic_string_view<WCHAR>;

// The text up to its first 0 unit. Comparisons of strings end there too.
TView ViewOf(const UnicodeString& text) {
    const TView units(text.t_str(), static_cast<std::size_t>(text.Length()));
    return units.substr(0, units.find(WCHAR{0}));
}

WCHAR Upper(WCHAR unit) {
    return unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - 'a' + 'A') : unit;
}

// Whether `text` in upper case is `name`.
bool IsUpperCaseOf(TView name, TView text) {
    return std::equal(text.begin(), text.end(), name.begin(), name.end(),
                      [](WCHAR a, WCHAR b) { return Upper(a) == b; });
}

// Finds the row that has the name or the number `text`.
bool FindDefineRow(const TDefineInfo* table, int& value, const UnicodeString& text) {
    TRows rows(table);
    int number;
    if (Sysutils::TryStrToInt(text, number)) {
        while (rows.Next()) {
            if (rows.Value() != number) continue;
            value = number;
            return true;
        }
        return false;
    }
    TView name = ViewOf(text);
    const TView prefix = ViewOf(rows.Prefix());
    if (IsUpperCaseOf(prefix, name.substr(0, prefix.size()))) name.remove_prefix(prefix.size());
    while (rows.Next()) {
        if (!IsUpperCaseOf(ViewOf(rows.Name()), name)) continue;
        value = rows.Value();
        return true;
    }
    return false;
}

}  // namespace

TDefineTable::TDefineTable(std::size_t room)
    : rows_(std::make_unique<std::byte[]>((room + 1) * kRowSize)) {}

// When a name finds no memory, the destructor releases those before it.
TDefineTable::TDefineTable(std::span<const TDefineConst> rows) : TDefineTable(rows.size()) {
    for (const TDefineConst& row : rows) {
        TNameSlot slot;
        new (&slot.name) UnicodeString(row.Name);
        std::memcpy(rows_.get() + count_ * kRowSize, &row.Value, sizeof row.Value);
        std::memcpy(NamePlace(rows_.get(), count_), static_cast<const void*>(&slot.name),
                    sizeof slot.name);
        ++count_;
    }
}

TDefineTable::~TDefineTable() {
    for (std::size_t i = 0; i < count_; ++i) {
        TNameSlot slot;
        std::memcpy(static_cast<void*>(&slot.name), NamePlace(rows_.get(), i), sizeof slot.name);
        slot.name.~UnicodeString();
    }
}

UnicodeString DefineToString(const TDefineInfo* table, int value, bool withPrefix) {
    TRows rows(table);
    if (rows.IsFlagSet()) return FlagsToString(table, value, withPrefix);
    while (rows.Next()) {
        if (rows.Value() == value) return withPrefix ? rows.Prefix() + rows.Name() : rows.Name();
    }
    return UnicodeString(value);
}

bool TryStringToDefine(const TDefineInfo* table, int& value, const UnicodeString& text) {
    if (TRows(table).IsFlagSet()) return TryStringToFlags(table, value, text);
    if (FindDefineRow(table, value, text)) return true;
    int number;
    if (!Sysutils::TryStrToInt(text, number)) return false;
    value = number;
    return true;
}

UnicodeString FlagsToString(const TDefineInfo* table, int value, bool withPrefix) {
    TRows rows(table);
    UnicodeString text;
    while (rows.Next()) {
        if ((rows.Value() & value) != rows.Value()) continue;
        if (!text.IsEmpty()) text += UnicodeString(kFlagSeparator);
        text += withPrefix ? rows.Prefix() + rows.Name() : rows.Name();
    }
    return text;
}

bool TryStringToFlags(const TDefineInfo* table, int& value, const UnicodeString& text) {
    TStringList names;
    TStrings& list = names;
    names.SetDelimiter(kFlagSeparator);
    names.SetDelimitedText(text);
    value = 0;
    for (int i = 0; i < list.GetCount(); ++i) {
        int flag;
        if (!FindDefineRow(table, flag, list.Get(i))) return false;
        value |= flag;
    }
    return true;
}

bool StringToBool(const UnicodeString& text) {
    TView word(text.t_str(), static_cast<std::size_t>(text.Length()));
    while (!word.empty() && word.front() <= 0x20) word.remove_prefix(1);
    while (!word.empty() && word.back() <= 0x20) word.remove_suffix(1);
    word = word.substr(0, word.find(WCHAR{0}));
    for (const TView no : {TView(TEXT("0")), TView(TEXT("FALSE")), TView(TEXT("OFF"))}) {
        if (IsUpperCaseOf(no, word)) return false;
    }
    return true;
}

UnicodeString BoolToString(bool b) {
    return b ? TEXT("True") : TEXT("False");
}
