#include <windows.h>

#include <set>

#include "log/log_input.h"
#include "log/log_show.h"

namespace qv {

namespace {

// New records are to be seen within a quarter of a second, the time to read them included.
constexpr DWORD kPause = 100;  // milliseconds

// One log that others write.
class Follower {
  public:
    Follower(const ShowOptions& options, LogView& view, std::optional<LogCursor> shown)
        : options_(options),
          view_(view),
          name_(FromUtf8(LogName(options.files.empty() ? "" : options.files[0]))),
          shown_(shown) {}

    void Look() {
        const std::string header = HeaderBytes(name_);
        if (header.empty() || header == header_) return;
        Mox::TLogReader reader;
        if (reader.Open(name_) || reader.StartWithoutHeader()) {
            ResumeAloud(reader, shown_);
            Take(ShowRest(reader, view_));
            for (const Mox::TLogSkip& skip : Skips(reader)) Say(SkipText(skip));
        } else {
            Say(OneLine(reader.Error().Trim()));
        }
        header_ = header;
    }

  private:
    void Take(const std::optional<LogCursor>& seen) {
        view_.Flush();
        if (!seen) return;
        shown_ = seen;
        if (!options_.cursor_file.empty()) SaveCursor(options_.cursor_file, *seen);
    }

    // Damage stays in the file for long, so that each one is told only once.
    void Say(const std::string& text) {
        if (said_.insert(text).second) PrintError(text);
    }

    const ShowOptions& options_;
    LogView& view_;
    UnicodeString name_;
    std::optional<LogCursor> shown_;
    std::string header_;
    std::set<std::string> said_;
};

}  // namespace

void FollowLog(const ShowOptions& options, LogView& view, std::optional<LogCursor> shown) {
    Follower follower(options, view, shown);
    while (!view.Filter().Until() || Now() <= *view.Filter().Until()) {
        follower.Look();
        Sleep(kPause);
    }
    follower.Look();
}

}  // namespace qv
