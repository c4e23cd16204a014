// qv log show: the records of a log, and those that come later.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "log/log_cursor.h"
#include "log/log_filter.h"
#include "log/record_line.h"
#include "log_file/log_reader.h"

namespace qv {

struct ShowOptions {
    std::string file, cursor_file;
    LogFilterOptions filter;
    LogStyle style;
    bool follow = false;
};

// Throws Failure, kDamaged when everything that can be read has been shown.
void ShowLog(const ShowOptions& options);

// Shows records that pass the filter. What is shown is collected: Flush brings it out.
class LogView {
  public:
    explicit LogView(const ShowOptions& options);

    // Shows the rest of the reader's records; returns the place of the last one, if there was any
    // and the options need it. With `only_last` the filter's number of newest ones holds.
    std::optional<LogCursor> Show(Mox::TLogReader& reader, bool only_last);
    void Flush();
    const LogFilter& Filter() const { return filter_; }

  private:
    void FlushMuch();

    LogFilter filter_;
    LogLines lines_;
    bool keeps_place_;
    std::string pending_;
};

// Shows what is new until the filter's end time, or for ever. `shown` is the last record that has
// been shown.
void FollowLog(const ShowOptions& options, LogView& view, std::optional<LogCursor> shown);

// Goes on behind the cursor, and says on standard error what cannot be shown any more. Forgets the
// cursor when it belongs to another ring.
void ResumeAloud(Mox::TLogReader& reader, std::optional<LogCursor>& cursor);

}  // namespace qv
