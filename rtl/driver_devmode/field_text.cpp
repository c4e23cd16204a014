#include "driver_devmode/field_text.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

#include "mox_classes/memory.h"
#include "mox_classes/string_list.h"

namespace driver_devmode {

namespace {

using enum FieldKind;

// Fields are packed: numbers are copied in and out, never referred to.
template <class T>
long long LoadAs(const void* data) {
    T value;
    std::memcpy(&value, data, sizeof(value));
    return value;
}

template <class T>
void StoreAs(void* data, long long number) {
    const T value = static_cast<T>(number);
    std::memcpy(data, &value, sizeof(value));
}

long long Load(FieldKind kind, const void* data) {
    switch (kind) {
        case Bool8:
        case Int8:
            return LoadAs<std::int8_t>(data);
        case UInt8:
            return LoadAs<std::uint8_t>(data);
        case Int16:
            return LoadAs<std::int16_t>(data);
        case UInt16:
            return LoadAs<std::uint16_t>(data);
        default:
            return LoadAs<std::uint32_t>(data);
    }
}

void Store(int size, void* data, long long number) {
    switch (size) {
        case 1:
            return StoreAs<std::uint8_t>(data, number);
        case 2:
            return StoreAs<std::uint16_t>(data, number);
        default:
            return StoreAs<std::uint32_t>(data, number);
    }
}

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

UnicodeString ElementText(const TFieldInfo& row, const void* data, Unsigned32 numbers) {
    const long long number = Load(row.Kind, data);
    if (row.Kind == Bool8) return BoolToString(number != 0);
    if (const TDefineInfo* values = ValuesOf(row.Values); values != nullptr) {
        return DefineToString(values, static_cast<int>(number), false);
    }
    if (numbers == Unsigned32::AsSigned) return static_cast<int>(number);
    return number;
}

// Leading blanks, a sign, decimal digits, then anything; no digits give 0. Beyond 64 bits it stays
// at the limit.
long long LeadingInteger(const UnicodeString& text) {
    const WCHAR* p = text.t_str();
    while (*p == ' ' || (*p >= '\t' && *p <= '\r')) ++p;
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+') ++p;
    constexpr long long kLimit = 1'000'000'000'000;
    long long number = 0;
    for (; *p >= '0' && *p <= '9'; ++p) number = std::min(number * 10 + (*p - '0'), kLimit);
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
        number = LeadingInteger(text);
    }
    return InRange(row.Kind, number);
}

bool SetNumbers(const TField& field, const UnicodeString& text, UnicodeString& previous) {
    const TFieldInfo& row = *field.row;
    Classes::TStringList items;
    items.SetCommaText(text);
    UnicodeString before;
    bool all_set = true;
    for (int i = 0; i < row.Count; ++i) {
        auto* element = static_cast<std::uint8_t*>(field.data) + std::ptrdiff_t{i} * row.Size;
        const UnicodeString was = ElementText(row, element, Unsigned32::AsUnsigned);
        if (i < items.GetCount()) {
            long long number = 0;
            if (!ParseElement(row, static_cast<Classes::TStrings&>(items).Get(i), number)) {
                all_set = false;
                continue;
            }
            Store(row.Size, element, number);
        }
        if (i > 0) before += TEXT(",");
        before += was;
    }
    if (all_set) previous = before;
    return all_set;
}

UnicodeString FromUtf8(const char* text, int bytes) {
    UnicodeString result;
    const int units = bytes == 0 ? 0 : MultiByteToWideChar(CP_UTF8, 0, text, bytes, nullptr, 0);
    if (units <= 0) return result;
    result.SetLength(units);
    MultiByteToWideChar(CP_UTF8, 0, text, bytes, result.data(), units);
    return result;
}

void SetAnsiText(const TField& field, const UnicodeString& text, UnicodeString& previous) {
    auto* bytes = static_cast<char*>(field.data);
    const int capacity = field.row->Count;
    previous = FromUtf8(bytes, static_cast<int>(std::find(bytes, bytes + capacity, '\0') - bytes));
    // A unit takes three bytes at most, so the first `capacity` units fill the field whatever
    // follows them.
    const int units = std::min(text.Length(), capacity);
    const auto utf8 = std::make_unique<char[]>(static_cast<std::size_t>(units) * 3 + 1);
    const int written = units == 0 ? 0
                                   : WideCharToMultiByte(CP_UTF8, 0, text.t_str(), units,
                                                         utf8.get(), units * 3, nullptr, nullptr);
    std::memset(bytes, 0, static_cast<std::size_t>(capacity));
    std::memcpy(bytes, utf8.get(), static_cast<std::size_t>(std::min(written, capacity)));
}

UnicodeString WideFieldText(const TField& field) {
    const auto* units = static_cast<const WCHAR*>(field.data);
    return UnicodeString(units, std::find(units, units + field.row->Count, WCHAR{0}) - units);
}

void SetWideText(const TField& field, const UnicodeString& text, UnicodeString& previous) {
    previous = WideFieldText(field);
    auto* units = static_cast<WCHAR*>(field.data);
    const int length = std::min(text.Length(), field.row->Count - 1);
    std::copy_n(text.t_str(), length, units);
    units[length] = 0;
}

UnicodeString AnsiFieldText(const TField& field) {
    const auto* bytes = static_cast<const char*>(field.data);
    return UnicodeString(bytes, std::find(bytes, bytes + field.row->Count, '\0') - bytes);
}

UnicodeString NumbersText(const TField& field) {
    const TFieldInfo& row = *field.row;
    UnicodeString text;
    for (int i = 0; i < row.Count; ++i) {
        if (i > 0) text += TEXT(",");
        text += ElementText(
            row, static_cast<const std::uint8_t*>(field.data) + std::ptrdiff_t{i} * row.Size,
            Unsigned32::AsSigned);
    }
    return text;
}

}  // namespace

UnicodeString ReadField(const TField& field) {
    switch (field.row->Kind) {
        case AnsiText:
            return AnsiFieldText(field);
        case WideText:
            return WideFieldText(field);
        case String:
            return *static_cast<const UnicodeString*>(field.data);
        case Gap:
            return UnicodeString();
        default:
            return NumbersText(field);
    }
}

bool SetField(const TField& field, const UnicodeString& text, UnicodeString& previous) {
    switch (field.row->Kind) {
        case AnsiText:
            SetAnsiText(field, text, previous);
            return true;
        case WideText:
            SetWideText(field, text, previous);
            return true;
        case String: {
            auto& member = *static_cast<UnicodeString*>(field.data);
            previous = member;
            member = text;
            return true;
        }
        case Gap:
            return false;
        default:
            return SetNumbers(field, text, previous);
    }
}

}  // namespace driver_devmode
