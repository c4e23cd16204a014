// A record as a line of text, JSON or CSV.
#pragma once

#include <string>

#include "mox_log/log_message.h"

namespace qv {

struct LogStyle {
    enum class Shape { kText, kJson, kCsv };

    Shape shape = Shape::kText;
    // Of the text only:
    bool colour = false;  // by level, with the escape sequences of terminals
    bool raw = false;     // control characters as they are
    bool utc = false;
};

// What stands in front of all records; empty for most shapes.
std::string LogHead(const LogStyle& style);
// With its line end.
std::string LogLine(const Mox::TLogMsg& record, const LogStyle& style);

// The level's character, or its number in hexadecimal when it is none that can be shown.
std::string LevelName(int level);

}  // namespace qv
