// The product's own settings in the registry. They hold for the whole machine.
#pragma once

#include <optional>

#include "base/console.h"

namespace qv {

// Returns nullopt for a value that is missing or cannot be read.
std::optional<UnicodeString> ReadGlobal(const UnicodeString& name);
// Deletes the value when it is nullopt. Throws Failure.
void WriteGlobal(const UnicodeString& name, const std::optional<UnicodeString>& value);

}  // namespace qv
