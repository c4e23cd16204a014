#include "log/log_show.h"

#include <cstdint>

#include "base/console.h"
#include "base/files.h"
#include "base/host.h"
#include "base/progress.h"
#include "log/log_input.h"

namespace qv {

namespace {

constexpr std::size_t kMostPending = 1 << 16;

void CheckOptions(const ShowOptions& options) {
    if (options.file != kStandardStream) return;
    if (options.follow || !options.cursor_file.empty()) {
        throw Failure("--follow and --cursor-file need a file, not standard input",
                      ExitCode::kWrongUsage);
    }
}

}  // namespace

LogView::LogView(const ShowOptions& options)
    : filter_(options.filter),
      lines_(options.style),
      keeps_place_(options.follow || !options.cursor_file.empty()),
      pending_(LogHead(options.style)) {}

std::optional<LogCursor> LogView::Show(Mox::TLogReader& reader, bool only_last) {
    // On a terminal the lines themselves tell how far it is; following has no end.
    std::optional<Progress> progress;
    if (only_last && !IsTerminal(Stream::kOutput)) progress.emplace("records");
    std::optional<LogCursor> seen;
    std::deque<std::string> newest;
    const std::size_t most = only_last ? filter_.Last().value_or(SIZE_MAX) : SIZE_MAX;
    while (const Mox::TLogMsg* record = reader.Next()) {
        if (progress) progress->Add();
        if (keeps_place_) seen = Mox::CursorAt(reader, *record);
        if (!filter_.Passes(*record)) continue;
        if (most == SIZE_MAX) {
            lines_.Add(pending_, *record);
            FlushMuch();
            continue;
        }
        lines_.Add(newest.emplace_back(), *record);
        if (newest.size() > most) newest.pop_front();
    }
    for (const std::string& line : newest) {
        pending_ += line;
        FlushMuch();
    }
    return seen;
}

void LogView::FlushMuch() {
    if (pending_.size() >= kMostPending) Flush();
}

void LogView::Flush() {
    if (!pending_.empty()) Print(pending_);
    pending_.clear();
}

void ResumeAloud(Mox::TLogReader& reader, std::optional<LogCursor>& cursor) {
    if (!cursor) return;
    const Mox::TLogResumed resumed = Mox::Resume(reader, *cursor);
    if (resumed.made_anew) {
        PrintError("the log was made anew; showing it from its start");
        cursor.reset();
    }
    if (resumed.overwritten > 0) {
        PrintError(Counted(resumed.overwritten, "record") +
                   (resumed.overwritten == 1 ? " was overwritten before it could be shown"
                                             : " were overwritten before they could be shown"));
    }
}

void ShowLog(const ShowOptions& options) {
    CheckOptions(options);
    LogView view(options);
    const std::string name = LogName(options.file);
    std::optional<LogCursor> shown;
    if (!options.cursor_file.empty()) shown = LoadCursor(options.cursor_file);
    Mox::TLogReader reader;
    OpenLog(reader, name);
    ResumeAloud(reader, shown);
    const std::optional<LogCursor> seen = view.Show(reader, true);
    view.Flush();
    if (seen && !options.cursor_file.empty()) SaveCursor(options.cursor_file, *seen);
    if (!options.follow) return FailOnSkips(reader);
    for (const Mox::TLogSkip& skip : Skips(reader)) PrintError(SkipText(skip));
    FollowLog(options, view, seen ? seen : shown);
}

}  // namespace qv
