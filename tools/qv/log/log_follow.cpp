#include <windows.h>

#include <set>

#include "log/log_cursor.h"
#include "log/log_input.h"
#include "log/log_show.h"
#include "log_file/log_follower.h"
#include "mox_classes/text/sys_error.h"

namespace qv {

namespace {

// New records are to be seen within a quarter of a second, the time to read them included.
constexpr DWORD kPause = 100;  // milliseconds

std::string MissedText(std::uint64_t records) {
    return Counted(records, "record") + (records == 1
                                             ? " was overwritten before it could be shown"
                                             : " were overwritten before they could be shown");
}

// One log that others write, shown from the cursor on.
class Follower {
  public:
    // Throws Failure (kCannotOpen) when the file cannot be read or holds no log.
    Follower(const ShowOptions& options, LogView& view) : options_(options), view_(view) {
        const std::string name = LogName(options.files.empty() ? "" : options.files[0]);
        const DWORD code = Open(FromUtf8(name));
        if (code == NO_ERROR) return;
        const UnicodeString& reason = log_.Reader().Error();
        CannotOpenLog(name, reason.Length() > 0 ? reason : Mox::GetSysError(code, true));
    }

    // Shows what is new, and keeps the place.
    void ShowNew() {
        log_.Look();
        bool is_any = false;
        for (; const Mox::TLogMsg* record = log_.NextFound(); is_any = true) {
            TellNews(log_.News());
            view_.Show(*record);
        }
        view_.ShowNewest();
        view_.Flush();
        if (is_any && !options_.cursor_file.empty())
            SaveCursor(options_.cursor_file, *log_.Place());
    }

    // Damage stays in the file for long, so that each one is told only once.
    void TellDamage() {
        const UnicodeString& error = log_.Reader().Error();
        if (error.Length() > 0) Say(OneLine(error.Trim()));
        for (const Mox::TLogSkip& skip : Skips(log_.Reader())) Say(SkipText(skip));
    }

    const Mox::TLogReader& Reader() const { return log_.Reader(); }

  private:
    DWORD Open(const UnicodeString& name) {
        std::optional<LogCursor> shown;
        if (!options_.cursor_file.empty()) shown = LoadCursor(options_.cursor_file);
        return shown ? log_.Open(name, *shown) : log_.Open(name, Mox::TLogFollower::TStart::Oldest);
    }

    static void TellNews(const Mox::TLogResumed& news) {
        if (news.made_anew) PrintError("the log was made anew; showing it from its start");
        if (news.overwritten > 0) PrintError(MissedText(news.overwritten));
    }

    void Say(const std::string& text) {
        if (said_.insert(text).second) PrintError(text);
    }

    const ShowOptions& options_;
    LogView& view_;
    Mox::TLogFollower log_;
    std::set<std::string> said_;
};

}  // namespace

void FollowLog(const ShowOptions& options, const LogFilter& filter) {
    LogView view(filter, options.style);
    Follower log(options, view);
    if (!options.follow) {
        log.ShowNew();
        return FailOnSkips(log.Reader());
    }
    for (bool is_last = false; !is_last;) {
        is_last = filter.Until() && Now() > *filter.Until();
        log.ShowNew();
        log.TellDamage();
        if (!is_last) Sleep(kPause);
    }
}

}  // namespace qv
