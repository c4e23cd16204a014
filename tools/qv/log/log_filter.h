// Which records of a log are wanted.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

#include "log/log_time.h"
#include "log/text_pattern.h"
#include "mox_log/log_message.h"

namespace qv {

// As the command line gives them; what is empty lets everything pass.
struct LogFilterOptions {
    std::vector<std::string> levels;
    std::optional<std::string> since, until;
    std::string grep;
    std::vector<std::uint32_t> processes, threads;
    std::vector<std::int64_t> sessions;
    std::vector<std::string> sources;
    bool ignore_case = false;
    std::optional<std::size_t> last;
};

void AddFilterOptions(CLI::App& command, LogFilterOptions& options);

class LogFilter {
  public:
    // Throws Failure (kWrongUsage) for a level, a time or a pattern that cannot be understood.
    explicit LogFilter(const LogFilterOptions& options);

    bool Passes(const Mox::TLogMsg& record) const;
    // No record that is logged after this moment passes.
    const std::optional<LogTime>& Until() const { return until_; }
    // Only the newest of the records that pass.
    const std::optional<std::size_t>& Last() const { return options_.last; }

  private:
    bool IsFromWanted(const Mox::TLogMsg& record) const;

    LogFilterOptions options_;
    std::string levels_;
    std::optional<LogTime> since_, until_;
    std::optional<TextPattern> pattern_;
};

LogTime TimeOf(const Mox::TLogMsg& record);
// The session as a number, -1 when it is not known.
std::int64_t SessionOf(const Mox::TLogMsg& record);

}  // namespace qv
