// The values of fields in JSON.
#pragma once

#include "base/json_output.h"
#include "settings/fields.h"

namespace qv {

// Turns the text of a field into JSON: true or false, a number, the name of a value, an array of
// numbers, or a text.
Json FieldJson(const Field& field, const UnicodeString& text);

}  // namespace qv
