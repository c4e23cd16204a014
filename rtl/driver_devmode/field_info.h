// One setting as a row of the settings table: its place, names, range and default.
#pragma once

#include <windows.h>

#include <array>
#include <limits>
#include <optional>

#include "driver_devmode/value_tables.h"
#include "mox_classes/text/unicode_string.h"

namespace driver_devmode {

enum class FieldKind : unsigned char {
    Bool8,
    Int8,
    UInt8,
    Int16,
    UInt16,
    UInt32,
    AnsiText,
    WideText,
    String,
    Gap
};

// More elements than any row of numbers has.
inline constexpr int kMostElements = 8;

// Further values of a range.
enum TRangeMore : unsigned char {
    kNoMore = 0,
    kOrZero = 1,       // 0 stands for "not set"
    kOrDriversOwn = 2  // from 256 on a driver's own values
};

// The values of an element that have a meaning. Setting by name takes every value that the kind can
// hold; `qv lint` names those outside the range. Without a range (Low above High) all have a
// meaning.
struct TRange {
    int Low = 0;
    int High = -1;
    int More = kNoMore;

    constexpr bool IsStated() const { return Low <= High; }
};

// The name in the text commands: as it stands in the answer of "getdevmode", in any case for
// "setdevmode".
struct TCommandKey {
    const WCHAR* Name = nullptr;
    int Place = 0;                   // in the answer, from 1
    std::optional<int> Otherwise{};  // stored for a text that is no number; without it that throws
};

// One row. The rows stand in field_rows.h.
struct TFieldInfo {
    // A dotted name is a group and a leaf. Empty for gaps.
    const WCHAR* Name = TEXT("");
    // Bytes from the start of the block, or the place of the member among the wrapper's strings.
    int Offset = -1;
    FieldKind Kind = FieldKind::Gap;
    // Elements; characters for texts, bytes for gaps.
    int Count = 1;
    // Bytes per element.
    int Size = 0;
    // Written by TQVDM::ToXmlNode.
    bool Listed = true;
    // Below this the block is none of the product any more.
    int Least = std::numeric_limits<int>::min();
    ValueTable Values = ValueTable::None;
    // What a fresh block has: numbers, or a text of ASCII.
    std::array<int, kMostElements> Fresh{};
    const char* FreshText = "";
    TRange Range{};
    // The bit of dmFields that puts a public field in force; 0: no bit speaks of it.
    DWORD Bit = 0;
    TCommandKey Key{};

    constexpr bool IsText() const { return Kind >= FieldKind::AnsiText && Kind != FieldKind::Gap; }
    constexpr int End() const { return Offset + Size * Count; }
};

}  // namespace driver_devmode
