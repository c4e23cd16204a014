// The product's own settings in the registry, which hold for the machine.
#pragma once

#include <optional>

#include "base/console.h"

namespace qv {

// Nothing for a value that is missing or cannot be read.
std::optional<UnicodeString> ReadGlobal(const UnicodeString& name);
// Nothing takes the value away. Throws Failure.
void WriteGlobal(const UnicodeString& name, const std::optional<UnicodeString>& value);

}  // namespace qv
