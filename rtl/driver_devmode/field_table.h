// The table that drives the settings: one row per field of the block in layout order, and the
// wrapper's string members.
#pragma once

#include <windows.h>

#include <span>
#include <string_view>

#include "driver_devmode/value_tables.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

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

// One row. `Size` is bytes per element, `Count` elements (characters for texts, bytes for gaps),
// `Offset` bytes from the start of the block, or the place of the member among the wrapper's
// strings.
struct TFieldInfo {
    const WCHAR* Name;
    FieldKind Kind;
    bool Listed;
    int Size;
    int Count;
    ValueTable Values;
    int Offset;

    constexpr bool IsText() const { return Kind >= FieldKind::AnsiText && Kind != FieldKind::Gap; }
    constexpr int End() const { return Offset + Size * Count; }
};

// The rows of the block; offsets follow from the rows before. The public part is the rows with
// offsets below 220.
QV_API std::span<const TFieldInfo> DevModeFields();
// The wrapper's strings: DeviceName, FormName, exOut.Directory, exOut.FileName, exRun.Target.
QV_API std::span<const TFieldInfo> WrapperFields();

// A name that is looked up: a leaf alone, or one in a group, which stands for "group.leaf".
struct TFieldName {
    std::basic_string_view<WCHAR> group;
    std::basic_string_view<WCHAR> leaf;
};

// The row of that exact name, or null; gaps have no name. The cost is the logarithm of the rows'
// number.
QV_API const TFieldInfo* FindDevModeField(const TFieldName& name);
QV_API const TFieldInfo* FindWrapperField(const TFieldName& name);

// The row's names as strings, made once: all documents share their buffers. `group` is null for a
// name without a dot, `leaf` is then the whole name. Valid until the library is unloaded.
struct TFieldStrings {
    UnicodeString name;
    UnicodeString group;
    UnicodeString leaf;
};
const TFieldStrings& StringsOf(const TFieldInfo& row);

}  // namespace driver_devmode
