// A text or a regular expression that is looked for in texts from outside.
#pragma once

#include <optional>
#include <string>

#include "log/expression.h"

namespace qv {

// Throws Failure (kWrongUsage) for a malformed pattern. One thread at a time.
class TextPattern {
  public:
    TextPattern(const std::string& pattern, bool ignore_case);
    bool IsIn(const UnicodeString& text) const;

  private:
    bool ignore_case_;
    // One of the two: the pattern when it has no special characters, or what it means.
    UnicodeString literal_;
    std::optional<Expression> expression_;
};

}  // namespace qv
