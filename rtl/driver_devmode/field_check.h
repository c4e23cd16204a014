// Checks whether a name and a text set a field completely. Setting by name takes what it can and
// says nothing about the rest; this check says it.
#pragma once

#include "driver_devmode/field_table.h"
#include "driver_devmode/qvdm.h"
#include "qv_api.h"

namespace driver_devmode {

enum class TFieldCheck {
    Taken,
    UnknownName,
    BadValue,  // no value of the field, or not in its range, or a word where a number is due
    TooMany,   // more values than the field has
    Cut,       // a text longer than the field
    NotKept,   // encoding writes it over with the wrapper's member
    NoRoom     // the texts together are longer than the block's pool
};

// Sets the field in `scratch`, with what it holds already, and encodes.
QV_API TFieldCheck CheckField(TQVDM& scratch, const TFieldName& name, const UnicodeString& text);

}  // namespace driver_devmode
