#include <windows.h>

#include <set>

#include "base/files.h"
#include "log/log_input.h"
#include "log/log_show.h"
#include "mox_classes/containers/streams.h"

namespace qv {

namespace {

// New records are to be seen within a quarter of a second, the time to read them included.
constexpr DWORD kPause = 100;  // milliseconds

// The header's bytes without its lock: only whether they change matters. Empty while there is no
// file.
std::string HeaderBytes(const UnicodeString& name) {
    constexpr unsigned short kReadShared = 0x40;
    std::string bytes(Mox::kHeaderSize, '\0');
    try {
        Classes::TFileStream file(name, kReadShared);
        const int size = file.Read(bytes.data(), static_cast<int>(bytes.size()));
        bytes.resize(static_cast<std::size_t>(size));
        return bytes;
    } catch (const UnicodeString&) {
        return std::string();
    }
}

// One log that others write.
class Follower {
  public:
    Follower(const ShowOptions& options, LogView& view, std::optional<LogCursor> shown)
        : options_(options), view_(view), name_(FromUtf8(LogName(options.file))), shown_(shown) {}

    void Look() {
        const std::string header = HeaderBytes(name_);
        if (header.empty() || header == header_) return;
        Mox::TLogReader reader;
        if (!reader.Open(name_)) {
            Say(OneLine(reader.Error().Trim()));
        } else {
            ResumeAloud(reader, shown_);
            Take(view_.Show(reader, false));
            for (const Mox::TLogSkip& skip : Skips(reader)) Say(SkipText(skip));
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

    // Damage stays in the file for long: each is told once.
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
