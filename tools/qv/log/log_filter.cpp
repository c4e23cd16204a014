#include "log/log_filter.h"

#include <algorithm>

#include "base/console.h"
#include "log/level_words.h"
#include "log/time_words.h"

namespace qv {

namespace {

std::optional<LogTime> Moment(const char* option, const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    return TimeOption(option, *text);
}

std::string Levels(const std::vector<std::string>& lists) {
    std::string levels;
    for (const std::string& list : lists) levels += LevelsOf("--level", list);
    return levels;
}

template <class T>
bool IsWanted(const std::vector<T>& wanted, const T& value) {
    return wanted.empty() || std::find(wanted.begin(), wanted.end(), value) != wanted.end();
}

}  // namespace

void AddFilterOptions(CLI::App& command, LogFilterOptions& options) {
    // Several values stand apart by commas, or behind several options: the next word may be a file.
    const auto add_list = [&command](const char* name, auto& values, const char* text) {
        return command.add_option(name, values, text)->allow_extra_args(false);
    };
    add_list(
        "--level", options.levels,
        "Only these levels: words (error, warning, information, trace, log) with commas between, "
        "or letters (X, *, i, a blank, >) side by side");
    add_list("--pid", options.processes, "Processes")->delimiter(',');
    add_list("--thread", options.threads, "Threads")->delimiter(',');
    add_list("--session", options.sessions, "Sessions; -1: not known")->delimiter(',');
    add_list("--source", options.sources, "Source modules")->delimiter(',');
    command.add_option("--since", options.since, std::string("From this time on: ") + kTimeWords);
    command.add_option("--until", options.until, "Up to this time, in the same forms");
    command.add_option("--grep", options.grep,
                       "Only records whose text has a match of this regular expression");
    command.add_flag("-i,--ignore-case", options.ignore_case,
                     "--grep: upper and lower case are the same");
    command.add_option("--last", options.last, "The newest N of these");
}

LogFilter::LogFilter(const LogFilterOptions& options)
    : options_(options),
      levels_(Levels(options.levels)),
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
    const bool level =
        levels_.empty() || (record.level > 0 && record.level < 0x80 &&
                            levels_.find(static_cast<char>(record.level)) != std::string::npos);
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
