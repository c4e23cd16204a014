// qv log show: the records of a log, and those that come later.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "log/log_filter.h"
#include "log/record_line.h"
#include "log_file/log_reader.h"

namespace qv {

struct ShowOptions {
    std::vector<std::string> files;  // none: the log in force
    std::string cursor_file;
    LogFilterOptions filter;
    LogStyle style;
    bool follow = false;
};

// The records of several logs are shown together, in the order of their times. Throws Failure,
// kDamaged when everything that can be read has been shown.
void ShowLog(const ShowOptions& options);

// Shows the records that pass the filter. What is shown is collected: Flush brings it out.
class LogView {
  public:
    // The filter must stay as long as the view.
    LogView(const LogFilter& filter, const LogStyle& style);

    // Shows the record when it passes. `log` as for LogLines. When only the newest records are
    // wanted, they are held back until ShowNewest.
    void Show(const Mox::TLogMsg& record, const std::string& log = "");
    // Ends the part of which only the newest records are wanted.
    void ShowNewest();
    void Flush();

  private:
    void FlushMuch();

    const LogFilter& filter_;
    LogLines lines_;
    std::optional<std::size_t> most_;
    std::deque<std::string> newest_;
    std::string pending_;
};

// What is behind the cursor; with options.follow also what comes later, until the filter's end time
// or for ever.
void FollowLog(const ShowOptions& options, const LogFilter& filter);

}  // namespace qv
