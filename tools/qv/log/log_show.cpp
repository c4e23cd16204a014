#include "log/log_show.h"

#include <algorithm>
#include <utility>

#include "base/console.h"
#include "base/files.h"
#include "base/host.h"
#include "base/progress.h"
#include "log/log_merge.h"
#include "log/log_sources.h"

namespace qv {

namespace {

constexpr std::size_t kMostPending = 1 << 16;

bool GoesOn(const ShowOptions& options) {
    return options.follow || !options.cursor_file.empty();
}

[[noreturn]] void RefuseToGoOn(const std::string& with) {
    throw Failure("--follow and --cursor-file need one log file, not " + with,
                  ExitCode::kWrongUsage);
}

void CheckOptions(const ShowOptions& options) {
    const auto inputs = std::ranges::count(options.files, kStandardStream);
    if (inputs > 1) throw Failure("standard input (-) can be read once", ExitCode::kWrongUsage);
    if (!GoesOn(options)) return;
    if (options.files.size() > 1) RefuseToGoOn("several");
    if (inputs > 0) RefuseToGoOn("standard input");
    if (options.files.empty()) return;
    if (IsArchive(options.files[0])) RefuseToGoOn("an archive");
    if (IsStream(options.files[0])) RefuseToGoOn("a pipe or a device");
}

// In a column: how many characters the text has.
int Width(const std::string& text) {
    return static_cast<int>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

// The names of the logs as the style shows them: of text in columns of one width.
std::vector<std::string> ShownNames(const std::vector<LogSource>& logs, LogStyle::Shape shape) {
    std::vector<std::string> names;
    int widest = 0;
    for (const LogSource& log : logs) {
        names.push_back(shape == LogStyle::Shape::kText ? OneLine(FromUtf8(log.name)) : log.name);
        widest = std::max(widest, Width(names.back()));
    }
    if (shape != LogStyle::Shape::kText) return names;
    for (std::string& name : names)
        name.append(static_cast<std::size_t>(widest - Width(name)), ' ');
    return names;
}

// What is there, of all logs together.
void ShowOnce(const ShowOptions& options, const LogFilter& filter) {
    LogSources sources = OpenLogs(options.files);
    LogStyle style = options.style;
    style.names_log = sources.logs.size() > 1;
    const std::vector<std::string> names = ShownNames(sources.logs, style.shape);
    LogView view(filter, style);
    LogMerge merge(sources.logs);
    // On a terminal the lines themselves tell how far it is.
    std::optional<Progress> progress;
    if (!IsTerminal(Stream::kOutput)) progress.emplace("records");
    while (const Mox::TLogMsg* record = merge.Next()) {
        if (progress) progress->Add();
        view.Show(*record, names[merge.Log()]);
    }
    progress.reset();
    view.ShowNewest();
    view.Flush();
    FailOnDamage(sources);
}

}  // namespace

LogView::LogView(const LogFilter& filter, const LogStyle& style)
    : filter_(filter), lines_(style), most_(filter.Last()), pending_(LogHead(style)) {}

void LogView::Show(const Mox::TLogMsg& record, const std::string& log) {
    if (!filter_.Passes(record)) return;
    if (!most_) {
        lines_.Add(pending_, record, log);
        return FlushMuch();
    }
    lines_.Add(newest_.emplace_back(), record, log);
    if (newest_.size() > *most_) newest_.pop_front();
}

void LogView::ShowNewest() {
    for (const std::string& line : newest_) {
        pending_ += line;
        FlushMuch();
    }
    newest_.clear();
    most_.reset();
}

void LogView::FlushMuch() {
    if (pending_.size() >= kMostPending) Flush();
}

void LogView::Flush() {
    if (!pending_.empty()) Print(pending_);
    pending_.clear();
}

void ShowLog(const ShowOptions& options) {
    CheckOptions(options);
    const LogFilter filter(options.filter);
    GoesOn(options) ? FollowLog(options, filter) : ShowOnce(options, filter);
}

}  // namespace qv
