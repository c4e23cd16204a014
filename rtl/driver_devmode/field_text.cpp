#include "driver_devmode/field_text.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "driver_devmode/field_numbers.h"
#include "mox_classes/text/utf8_text.h"

namespace driver_devmode {

namespace {

using enum FieldKind;

void SetAnsiText(const TField& field, const UnicodeString& text, UnicodeString* previous) {
    auto* bytes = static_cast<char*>(field.data);
    const int capacity = field.row->Count;
    if (previous != nullptr) {
        *previous = System::StringFromUtf8(
            bytes, static_cast<int>(std::find(bytes, bytes + capacity, '\0') - bytes));
    }
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

void SetWideText(const TField& field, const UnicodeString& text, UnicodeString* previous) {
    if (previous != nullptr) *previous = WideFieldText(field);
    auto* units = static_cast<WCHAR*>(field.data);
    const int length = std::min(text.Length(), field.row->Count - 1);
    std::copy_n(text.t_str(), length, units);
    units[length] = 0;
}

UnicodeString AnsiFieldText(const TField& field) {
    const auto* bytes = static_cast<const char*>(field.data);
    return UnicodeString(bytes, std::find(bytes, bytes + field.row->Count, '\0') - bytes);
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
            return ReadNumbers(field);
    }
}

bool SetField(const TField& field, const UnicodeString& text, UnicodeString* previous) {
    switch (field.row->Kind) {
        case AnsiText:
            SetAnsiText(field, text, previous);
            return true;
        case WideText:
            SetWideText(field, text, previous);
            return true;
        case String: {
            auto& member = *static_cast<UnicodeString*>(field.data);
            if (previous != nullptr) *previous = member;
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
