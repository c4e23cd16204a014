#include "driver_devmode/field_numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>

#include "mox_classes/containers/string_list.h"

namespace driver_devmode {

namespace {

using enum FieldKind;
using TView = std::basic_string_view<WCHAR>;

template <class T>
bool Fits(long long number) {
    return number >= std::numeric_limits<T>::min() && number <= std::numeric_limits<T>::max();
}

bool InRange(FieldKind kind, long long number) {
    switch (kind) {
        case Bool8:
        case Int8:
            return Fits<std::int8_t>(number);
        case UInt8:
            return Fits<std::uint8_t>(number);
        case Int16:
            return Fits<std::int16_t>(number);
        case UInt16:
            return Fits<std::uint16_t>(number);
        default:
            return Fits<std::int32_t>(number) || Fits<std::uint32_t>(number);
    }
}

enum class Unsigned32 : bool { AsSigned, AsUnsigned };

// What a number without a name shows.
long long Shown(const TFieldInfo& row, long long number, Unsigned32 numbers) {
    const bool as_signed = row.Kind == UInt32 && numbers == Unsigned32::AsSigned;
    return as_signed ? static_cast<std::int32_t>(number) : number;
}

UnicodeString ElementText(const TFieldInfo& row, long long number, Unsigned32 numbers) {
    if (row.Kind == Bool8) return BoolToString(number != 0);
    if (const TDefineInfo* values = ValuesOf(row.Values); values != nullptr) {
        return DefineToString(values, static_cast<int>(number), false);
    }
    return Shown(row, number, numbers);
}

// Joined by ","; allocates nothing but the result.
UnicodeString ElementsText(const TFieldInfo& row, const long long* elements, Unsigned32 numbers) {
    if (row.Count == 1) return ElementText(row, *elements, numbers);
    char digits[kMostElements * 21];
    char* end = digits;
    for (int i = 0; i < row.Count; ++i) {
        if (i > 0) *end++ = ',';
        end = std::to_chars(end, std::end(digits), Shown(row, elements[i], numbers)).ptr;
    }
    WCHAR units[std::size(digits)];
    std::copy(digits, end, units);
    return UnicodeString(units, end - digits);
}

// Leading blanks, a sign, decimal digits, then anything; no digits give 0. Beyond 64 bits it stays
// at the limit.
long long LeadingInteger(TView text) {
    const WCHAR* p = text.data();
    const WCHAR* const end = p + text.size();
    while (p < end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) ++p;
    const bool negative = p < end && *p == '-';
    if (p < end && (*p == '-' || *p == '+')) ++p;
    constexpr long long kLimit = 1'000'000'000'000;
    long long number = 0;
    for (; p < end && *p >= '0' && *p <= '9'; ++p) {
        number = std::min(number * 10 + (*p - '0'), kLimit);
    }
    return negative ? -number : number;
}

bool ParseElement(const TFieldInfo& row, const UnicodeString& text, long long& number) {
    if (row.Kind == Bool8) {
        number = StringToBool(text) ? 1 : 0;
    } else if (const TDefineInfo* values = ValuesOf(row.Values); values != nullptr) {
        int value = 0;
        if (!TryStringToDefine(values, value, text)) return false;
        number = value;
    } else {
        number = LeadingInteger(TView(text.t_str(), static_cast<std::size_t>(text.Length())));
    }
    return InRange(row.Kind, number);
}

// The elements of a text, one after the other, as the comma text of a string list has them. A text
// without quotes and blanks, as ReadField writes it, is cut in place. A string list splits the
// others.
class TElements {
  public:
    explicit TElements(const UnicodeString& text)
        : text_(text),
          rest_(text.t_str(), static_cast<std::size_t>(text.Length())),
          is_plain_(std::ranges::all_of(rest_, [](WCHAR c) { return c > ' ' && c != '"'; })),
          at_end_(rest_.empty()) {
        if (!is_plain_) items_.emplace().SetCommaText(text);
    }
    // False when there is no further element; else whether it is one of the row's values.
    bool Next(const TFieldInfo& row, bool& valid, long long& number) {
        if (!is_plain_) {
            if (next_ >= items_->GetCount()) return false;
            valid =
                ParseElement(row, static_cast<Classes::TStrings&>(*items_).Get(next_++), number);
            return true;
        }
        if (at_end_) return false;
        const std::size_t end = rest_.find(',');
        const TView element = rest_.substr(0, end);
        at_end_ = end == TView::npos;
        if (row.Kind == Bool8 || row.Values != ValueTable::None) {
            const bool is_whole = element.size() == static_cast<std::size_t>(text_.Length());
            valid = ParseElement(row, is_whole ? text_ : Copy(element), number);
        } else {
            number = LeadingInteger(element);
            valid = InRange(row.Kind, number);
        }
        rest_.remove_prefix(at_end_ ? rest_.size() : end + 1);
        return true;
    }

  private:
    static UnicodeString Copy(TView text) {
        return UnicodeString(text.data(), static_cast<long long>(text.size()));
    }

    const UnicodeString& text_;
    TView rest_;
    const bool is_plain_;
    bool at_end_;
    std::optional<Classes::TStringList> items_;
    int next_ = 0;
};

}  // namespace

UnicodeString ReadNumbers(const TField& field) {
    const TFieldInfo& row = *field.row;
    std::array<long long, kMostElements> elements{};
    for (int i = 0; i < row.Count; ++i) {
        elements[static_cast<std::size_t>(i)] = LoadElement(field, i);
    }
    return ElementsText(row, elements.data(), Unsigned32::AsSigned);
}

bool SetNumbers(const TField& field, const UnicodeString& text, UnicodeString* previous) {
    const TFieldInfo& row = *field.row;
    std::array<long long, kMostElements> before{};
    TElements supplied(text);
    bool all_set = true;
    for (int i = 0; i < row.Count; ++i) {
        before[static_cast<std::size_t>(i)] = LoadElement(field, i);
        bool valid = false;
        long long number = 0;
        if (!supplied.Next(row, valid, number)) continue;
        valid = valid && number >= field.least;
        if (valid) StoreElement(field, i, number);
        all_set = all_set && valid;
    }
    if (all_set && previous != nullptr) {
        *previous = ElementsText(row, before.data(), Unsigned32::AsUnsigned);
    }
    return all_set;
}

}  // namespace driver_devmode
