#include "log/log_filter.h"

#include <algorithm>

#include "base/console.h"

namespace qv {

namespace {

std::optional<LogTime> Moment(const char* option, const std::string& text) {
    if (text.empty()) return std::nullopt;
    LogTime time = 0;
    if (ParseTime(text, Now(), time)) return time;
    throw Failure(std::string(option) + ": '" + text +
                      "' is no time such as 2026-01-31, 2026-01-31T09:00:00 or 10m (ago)",
                  ExitCode::kWrongUsage);
}

template <class T>
bool IsWanted(const std::vector<T>& wanted, const T& value) {
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), value) != wanted.end();
}

}  // namespace

void AddFilterOptions(CLI::App& command, LogFilterOptions& options) {
    command.add_option("--level", options.levels,
                       "Levels, a letter each: X error, * warning, i information, blank trace");
    command.add_option("--pid", options.processes, "Processes")->delimiter(',');
    command.add_option("--thread", options.threads, "Threads")->delimiter(',');
    command.add_option("--session", options.sessions, "Sessions; -1: not known")->delimiter(',');
    command.add_option("--source", options.sources, "Source modules")->delimiter(',');
    command.add_option("--since", options.since,
                       "From this time on: 2026-01-31, 2026-01-31T09:00:00 (local; UTC with Z), or "
                       "how long ago: 90s, 10m, 2h, 1d");
    command.add_option("--until", options.until, "Up to this time, in the same forms");
    command.add_option("--grep", options.grep, "Texts in which this regular expression is found");
    command.add_flag("-i,--ignore-case", options.ignore_case, "--grep takes A for a");
    command.add_option("--last", options.last, "Of these only the newest N");
}

LogFilter::LogFilter(const LogFilterOptions& options)
    : options_(options),
      since_(Moment("--since", options.since)),
      until_(Moment("--until", options.until)) {
    for (std::string& source : options_.sources) source = ToUtf8(FromUtf8(source).LowerCase());
    if (!options.grep.empty()) pattern_.emplace(options.grep, options.ignore_case);
}

bool LogFilter::Passes(const Mox::TLogMsg& record) const {
    const LogTime time = TimeOf(record);
    if ((since_ && time < *since_) || (until_ && time > *until_)) return false;
    return IsFromWanted(record) && (!pattern_ || pattern_->IsIn(record.text));
}

bool LogFilter::IsFromWanted(const Mox::TLogMsg& record) const {
    const bool level = options_.levels.empty() ||
                       (record.level > 0 && record.level < 0x80 &&
                        options_.levels.find(static_cast<char>(record.level)) != std::string::npos);
    return level && IsWanted(options_.processes, std::uint32_t{record.processId}) &&
           IsWanted(options_.threads, std::uint32_t{record.threadId}) &&
           IsWanted(options_.sessions, SessionOf(record)) &&
           (options_.sources.empty() ||
            IsWanted(options_.sources, ToUtf8(record.source.LowerCase())));
}

LogTime TimeOf(const Mox::TLogMsg& record) {
    return LogTime{record.time.dwHighDateTime} << 32 | record.time.dwLowDateTime;
}

std::int64_t SessionOf(const Mox::TLogMsg& record) {
    return record.sessionId == 0xFFFFFFFF ? -1 : std::int64_t{record.sessionId};
}

}  // namespace qv
