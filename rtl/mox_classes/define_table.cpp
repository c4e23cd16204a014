#include "mox_classes/define_table.h"

#include <cstddef>
#include <cstring>
#include <new>

#include "mox_classes/string_list.h"
#include "mox_classes/sysutils_numbers.h"
#include "mox_classes/sysutils_text.h"

namespace {

constexpr WCHAR kFlagSeparator = '|';
constexpr std::size_t kRowSize = sizeof(TDefineInfo);
constexpr std::size_t kNameOffset = 4;
static_assert(kRowSize == kNameOffset + sizeof(UnicodeString));

// A string whose pointer is brought in from a row, or taken out to one, as bytes: a row's own name
// is not aligned.
union TNameSlot {
    TNameSlot() {}   // NOLINT(modernize-use-equals-default): would be deleted, the name has one
    ~TNameSlot() {}  // NOLINT(modernize-use-equals-default)
    UnicodeString name;
};

void* NamePlace(std::byte* rows, std::size_t row) {
    return rows + row * kRowSize + kNameOffset;
}

struct TRow {
    std::int32_t value;
    UnicodeString name;
};

// Walks the value rows of a table; a null table has none.
class TRows {
  public:
    explicit TRows(const TDefineInfo* table)
        : next_(reinterpret_cast<const std::byte*>(table)),
          first_(table == nullptr ? TRow{0, UnicodeString()} : Read()) {}

    bool IsFlagSet() const { return first_.value != 0; }
    const UnicodeString& Prefix() const { return first_.name; }
    // False after the last value row.
    bool Next(TRow& row) {
        if (next_ == nullptr) return false;
        row = Read();
        if (!row.name.IsEmpty()) return true;
        next_ = nullptr;
        return false;
    }

  private:
    TRow Read() {
        TNameSlot slot;
        TRow row;
        std::memcpy(&row.value, next_, sizeof row.value);
        std::memcpy(static_cast<void*>(&slot.name), next_ + kNameOffset, sizeof slot.name);
        row.name = slot.name;
        next_ += kRowSize;
        return row;
    }

    const std::byte* next_;
    TRow first_;
};

// The value of the row that `text` names or numbers.
bool FindDefineRow(const TDefineInfo* table, int& value, const UnicodeString& text) {
    TRows rows(table);
    TRow row;
    int number;
    if (Sysutils::TryStrToInt(text, number)) {
        while (rows.Next(row)) {
            if (row.value != number) continue;
            value = number;
            return true;
        }
        return false;
    }
    UnicodeString name = Sysutils::UpperCase(text);
    const int prefix_length = rows.Prefix().Length();
    if (name.SubString(1, prefix_length) == rows.Prefix()) name.Delete(1, prefix_length);
    while (rows.Next(row)) {
        if (row.name != name) continue;
        value = row.value;
        return true;
    }
    return false;
}

}  // namespace

TDefineTable::TDefineTable(std::span<const TDefineConst> rows)
    : count_(0), rows_(std::make_unique<std::byte[]>((rows.size() + 1) * kRowSize)) {
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
    TRow row;
    while (rows.Next(row)) {
        if (row.value == value) return withPrefix ? rows.Prefix() + row.name : row.name;
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
    TRow row;
    while (rows.Next(row)) {
        if ((row.value & value) != row.value) continue;
        if (!text.IsEmpty()) text += UnicodeString(kFlagSeparator);
        text += withPrefix ? rows.Prefix() + row.name : row.name;
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
    const UnicodeString word = Sysutils::LowerCase(Sysutils::Trim(text));
    for (const WCHAR* no : {TEXT("0"), TEXT("false"), TEXT("off")}) {
        if (word == UnicodeString(no)) return false;
    }
    return true;
}

UnicodeString BoolToString(bool b) {
    return b ? TEXT("True") : TEXT("False");
}
