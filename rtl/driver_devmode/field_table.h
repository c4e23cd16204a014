// The table that drives the settings: one row per field of the block in layout order, and the
// wrapper's string members.
#pragma once

#include <windows.h>

#include <span>
#include <string_view>

#include "driver_devmode/field_info.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace driver_devmode {

// The rows of the block. The public part is the rows with offsets below 220.
QV_API std::span<const TFieldInfo> DevModeFields();
// The wrapper's strings: DeviceName, FormName, exOut.Directory, exOut.FileName, exRun.Target.
QV_API std::span<const TFieldInfo> WrapperFields();

// A name that is looked up: a leaf alone, or one in a group, which stands for "group.leaf".
struct TFieldName {
    std::basic_string_view<WCHAR> group;
    std::basic_string_view<WCHAR> leaf;
};

// The row of that exact name, or null. Gaps have no name. Takes time in proportion to the logarithm
// of the number of rows.
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
