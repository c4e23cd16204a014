// A regular expression that is looked for in texts from outside.
#pragma once

#include <regex>
#include <string>

#include "mox_classes/text/unicode_string.h"

namespace qv {

// The syntax of ECMAScript without back references; a character is a UTF-16 code unit. A search
// takes time in proportion to the text's length, whatever pattern and text are. Throws Failure
// (kWrongUsage) for a malformed pattern.
class TextPattern {
  public:
    TextPattern(const std::string& pattern, bool ignore_case);
    bool IsIn(const UnicodeString& text) const;

  private:
    bool ignore_case_;
    std::wstring literal_;  // the pattern when it has no special characters
    std::wregex regex_;
};

}  // namespace qv
