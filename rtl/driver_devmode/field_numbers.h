// The text form of a field of numbers: booleans, integers and named values, one or several joined
// by commas.
#pragma once

#include "driver_devmode/field_elements.h"

namespace driver_devmode {

// ReadField and SetField for these kinds.
UnicodeString ReadNumbers(const TField& field);
bool SetNumbers(const TField& field, const UnicodeString& text, UnicodeString* previous);

}  // namespace driver_devmode
