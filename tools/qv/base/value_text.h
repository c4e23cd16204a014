// A value on one line of a text file. It is quoted, with escapes, only when it could not be read
// back without quotes.
#pragma once

#include <optional>

#include "base/console.h"

namespace qv {

// Any text of UTF-16 units, halves of surrogate pairs included, as UTF-8 without control
// characters: bare, or quoted with \" \\ \t \n \r and \uXXXX.
std::string ToValueText(const UnicodeString& value);

// Reads either form and ignores blanks around it. Returns nullopt for wrong quotes, wrong escapes
// or bytes that are not UTF-8.
std::optional<UnicodeString> FromValueText(const std::string& text);

// `text` without the blanks and control characters around it.
std::string Trimmed(const std::string& text);

}  // namespace qv
