// A field in memory, and its elements as plain numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "driver_devmode/field_info.h"

namespace driver_devmode {

// A field's row and its bytes (a UnicodeString for the kind String). Rows without memory are
// unknown names.
struct TField {
    const TFieldInfo* row = nullptr;
    void* data = nullptr;
    // The least number that the field takes.
    int least = std::numeric_limits<int>::min();

    explicit operator bool() const { return row != nullptr; }
};

namespace elements {

// Fields are packed, so that numbers are copied in and out and no pointer to them is made.
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

inline std::uint8_t* At(const TField& field, int index) {
    // cppcheck-suppress CastIntegerToAddressAtReturn ; an address and a distance
    return static_cast<std::uint8_t*>(field.data) + std::ptrdiff_t{index} * field.row->Size;
}

}  // namespace elements

// Element `index` of a field of numbers, which must be below the row's count; booleans with their
// sign.
inline long long LoadElement(const TField& field, int index) {
    const void* const data = elements::At(field, index);
    switch (field.row->Kind) {
        case FieldKind::Bool8:
        case FieldKind::Int8:
            return elements::LoadAs<std::int8_t>(data);
        case FieldKind::UInt8:
            return elements::LoadAs<std::uint8_t>(data);
        case FieldKind::Int16:
            return elements::LoadAs<std::int16_t>(data);
        case FieldKind::UInt16:
            return elements::LoadAs<std::uint16_t>(data);
        default:
            return elements::LoadAs<std::uint32_t>(data);
    }
}

// A number that is too large loses its upper bytes.
inline void StoreElement(const TField& field, int index, long long number) {
    void* const data = elements::At(field, index);
    switch (field.row->Size) {
        case 1:
            return elements::StoreAs<std::uint8_t>(data, number);
        case 2:
            return elements::StoreAs<std::uint16_t>(data, number);
        default:
            return elements::StoreAs<std::uint32_t>(data, number);
    }
}

}  // namespace driver_devmode
