// The symbolic names of the settings' values.
#pragma once

#include "mox_classes/format/define_table.h"

namespace driver_devmode {

enum class ValueTable : unsigned char {
    None,
    Orientation,
    PrintQuality,
    DialogMode,
    DitherMethod,
    PaperSize
};

// The table in the form that DefineToString and its sisters take; null for None. Lives until the
// library unloads.
const TDefineInfo* ValuesOf(ValueTable table);

}  // namespace driver_devmode
