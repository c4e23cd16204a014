// The text form of one field: reading it, and setting it from text.
#pragma once

#include "driver_devmode/field_elements.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

namespace driver_devmode {

// The elements joined by ",": "True"/"False", symbolic names without prefix, decimal numbers
// (32-bit ones signed), or the whole text. Gaps read as the empty string.
QV_API UnicodeString ReadField(const TField& field);

// Sets the elements that `text` supplies; element-wise all or nothing. True when every one could be
// set, and then `previous`, unless it is null, is what the field was; else it is left alone. Texts
// are cut to the field and always succeed.
QV_API bool SetField(const TField& field, const UnicodeString& text, UnicodeString* previous);

}  // namespace driver_devmode
