// What a fresh block has: Init of the block and of its image options, as the rows say.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "driver_devmode/field_rows.h"

namespace {

using driver_devmode::FieldKind;
using driver_devmode::kDevModeFields;
using driver_devmode::TFieldInfo;

constexpr std::size_t kRowBytes = static_cast<std::size_t>(kDevModeFields.back().End());
using TRowBytes = std::array<std::uint8_t, kRowBytes>;

// `at` and `size` in bytes.
constexpr void PutNumber(TRowBytes& bytes, int at, int size, int number) {
    for (int i = 0; i < size; ++i) {
        bytes.at(static_cast<unsigned>(at + i)) = static_cast<std::uint8_t>(number >> (8 * i));
    }
}

constexpr void PutText(TRowBytes& bytes, const TFieldInfo& row) {
    int at = row.Offset;
    for (const char* text = row.FreshText; *text != '\0' && at + row.Size < row.End(); ++text) {
        PutNumber(bytes, at, row.Size, *text);
        at += row.Size;
    }
}

// The bytes in front of the pool; little-endian, as the whole block.
constexpr TRowBytes FreshBytes() {
    TRowBytes bytes{};
    for (const TFieldInfo& row : kDevModeFields) {
        if (row.IsText()) {
            PutText(bytes, row);
        } else if (row.Kind != FieldKind::Gap) {
            for (int i = 0; i < row.Count; ++i) {
                PutNumber(bytes, row.Offset + i * row.Size, row.Size,
                          row.Fresh[static_cast<std::size_t>(i)]);
            }
        }
    }
    return bytes;
}

constexpr TRowBytes kFreshBytes = FreshBytes();

}  // namespace

void QV_DEVMODE::Init() {
    auto* bytes = reinterpret_cast<std::uint8_t*>(static_cast<DEVMODEW*>(this));
    std::copy(kFreshBytes.begin(), kFreshBytes.end(), bytes);
    std::memset(bytes + kRowBytes, 0, sizeof(*this) - kRowBytes);
    dmFields = QV_DEVMODE_AvailableFields;
}

void TImageProcessOptions::Init() {
    constexpr int kBegin = QV_DEVMODE_EXTRA::kPublicSize + offsetof(QV_DEVMODE_EXTRA, exIPO);
    constexpr int kEnd = kBegin + sizeof(TImageProcessOptions);
    auto* bytes = reinterpret_cast<std::uint8_t*>(this);
    for (auto row = std::ranges::lower_bound(kDevModeFields, kBegin, {}, &TFieldInfo::Offset);
         row != kDevModeFields.end() && row->Offset < kEnd; ++row) {
        if (row->Kind == FieldKind::Gap) continue;
        std::copy_n(kFreshBytes.begin() + row->Offset, row->Size * row->Count,
                    bytes + row->Offset - kBegin);
    }
    reserved_39 = 0;
}
