// What a field takes. The library sets what it can of a text and is silent about the rest; whoever
// changes settings with the tool hears of everything that would be lost.
#pragma once

#include "settings/fields.h"

namespace qv {

// Why the field cannot take the whole of `text` as it stands; empty when it can.
std::string ValueFault(const Field& field, const UnicodeString& text);

}  // namespace qv
