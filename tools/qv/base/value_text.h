// A value on one line of a text file. It stands there as it is, or quoted with escapes when it
// could not be read back otherwise.
#pragma once

#include <optional>

#include "base/console.h"

namespace qv {

// Any text of UTF-16 units, halves of surrogate pairs included, as UTF-8 without control
// characters: bare, or quoted with \" \\ \t \n \r and \uXXXX.
std::string ToValueText(const UnicodeString& value);

// Reads either form, blanks around it left out. Nothing when quotes or escapes are wrong or the
// bytes are not UTF-8.
std::optional<UnicodeString> FromValueText(const std::string& text);

// `text` without the blanks and control characters around it.
std::string Trimmed(const std::string& text);

}  // namespace qv
