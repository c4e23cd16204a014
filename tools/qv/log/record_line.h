// A record as a line of text, JSON or CSV, or as an entry for a journal.
#pragma once

#include <string>

#include "base/utf8_text.h"
#include "log/log_time.h"
#include "log/record_parts.h"
#include "mox_log/log_message.h"

namespace qv {

struct LogStyle {
    enum class Shape { kText, kJson, kCsv, kExport };

    Shape shape = Shape::kText;
    // Of the text only:
    bool colour = false;  // by level, with the escape sequences of terminals
    bool raw = false;     // control characters as they are
    bool utc = false;
    // Each record names its log: in a column of the text behind the time, as the key "log" of JSON,
    // as the last column of CSV, as a field of an entry.
    bool names_log = false;
    std::string host = "";  // of an entry: the machine that wrote the records, where it is known
};

// What stands in front of all records; empty for most shapes.
std::string LogHead(const LogStyle& style);

// Writes records, one after the other.
class LogLines {
  public:
    explicit LogLines(const LogStyle& style);

    // With its line end, behind what `out` holds. `log` is the name of the record's log, of text as
    // it is to be shown; without a use unless the style has it.
    void Add(std::string& out, const Mox::TLogMsg& record, const std::string& log = "");

  private:
    void AddText(std::string& out, const Mox::TLogMsg& record, const std::string& log);
    void AddShown(std::string& out, Units text) const;
    void AddBlock(std::string& out, const Mox::TLogMsg& record) const;
    void AddJson(std::string& out, const Mox::TLogMsg& record, const std::string& log);
    void AddCsv(std::string& out, const Mox::TLogMsg& record, const std::string& log);

    LogStyle style_;
    TimeText time_;
};

}  // namespace qv
