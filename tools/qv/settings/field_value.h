// Checks a value before it is set. The library sets the part of a text that fits and does not
// report the rest; the tool refuses a value that would lose something.
#pragma once

#include "settings/fields.h"

namespace qv {

// Says why the field cannot hold all of `text`; empty when it can.
std::string ValueFault(const Field& field, const UnicodeString& text);

}  // namespace qv
