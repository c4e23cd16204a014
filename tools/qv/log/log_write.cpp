#include "log/log_write.h"

#include <cstdint>
#include <cstdio>

#include "base/console.h"
#include "base/files.h"
#include "base/host.h"
#include "driver_global/startup.h"
#include "log/level_words.h"
#include "log/log_input.h"
#include "qv_rtl_main/log_calls.h"

namespace qv {

namespace {

// Bytes of a line that are kept. Of UTF-8, every text that the log takes whole is shorter.
constexpr std::size_t kMostBytes = 4 * (std::size_t{kMostLogText} + 1);

// The next line of standard input without its end; false at the end of the input. A line is there
// as soon as it is written, and one without an end takes no more memory than kMostBytes.
bool NextLine(std::string& line) {
    line.clear();
    int c = std::getc(stdin);
    if (c == EOF) return false;
    for (; c != EOF && c != '\n'; c = std::getc(stdin)) {
        if (line.size() < kMostBytes) line += static_cast<char>(c);
    }
    if (line.ends_with('\r')) line.pop_back();
    return true;
}

std::string JoinedWords(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

char Level(const std::string& word) {
    const std::optional<char> level = LevelOf(word);
    if (level && *level != '>') return *level;
    throw Failure("--level: '" + OneLine(FromUtf8(word)) + "' is none of " + kLevelWords,
                  ExitCode::kWrongUsage);
}

// The log in force, with this program as one that writes it.
class LogTarget {
  public:
    explicit LogTarget(const WriteOptions& options)
        : level_(Level(options.level)),
          source_(FromUtf8(options.source)),
          name_(FromUtf8(LogName(""))) {
        if (IsLockStuck(name_)) {
            throw Failure(
                Named("its lock has been held for more than a second by " + LockHolders(name_)));
        }
        if (const DWORD code = InstallLogRecorder()) Fail(code, ExitCode::kCannotOpen);
    }

    void Add(const std::string& line) {
        UnicodeString text = FromUtf8(line);
        // What is no text is shown as such. A zero would end the text.
        for (int i = 1; i <= text.Length(); ++i) {
            if (text[i] == 0) text[i] = 0xFFFD;
        }
        const int code = QVWriteLog(level_, source_.t_str(), 0, text.t_str());
        if (code == ERROR_INVALID_PARAMETER) {
            throw Failure("--source: a name has 1 to " + std::to_string(kMostLogSource) +
                              " characters, without blanks, commas and brackets",
                          ExitCode::kWrongUsage);
        }
        if (code != NO_ERROR) Fail(static_cast<DWORD>(code), ExitCode::kFailed);
        ++written_;
        if (text.Length() > kMostLogText) ++cut_;
    }

    // Throws Failure when a line was cut.
    void Finish() const {
        if (cut_ == 0) return;
        throw Failure(Counted(cut_, "line") + " of more than " + std::to_string(kMostLogText) +
                          " characters " + (cut_ == 1 ? "was" : "were") + " cut",
                      ExitCode::kDamaged);
    }

  private:
    std::string Named(const std::string& text) const { return Quoted(name_) + ": " + text; }

    [[noreturn]] void Fail(DWORD code, ExitCode exit) const {
        const bool is_no_log = code == ERROR_INVALID_DATA;
        std::string text =
            Named(is_no_log ? "the file is no log, or one of another version" : SystemText(code));
        if (written_ > 0) text += "; " + Counted(written_, "line") + " written before";
        throw Failure(text, is_no_log ? ExitCode::kCannotOpen : exit);
    }

    char level_;
    UnicodeString source_, name_;
    std::uint64_t written_ = 0, cut_ = 0;
};

}  // namespace

void WriteLog(const WriteOptions& options) {
    LogTarget log(options);
    const bool from_input =
        options.words.empty() || (options.words.size() == 1 && options.words[0] == kStandardStream);
    if (from_input) {
        for (std::string line; NextLine(line);) log.Add(line);
        if (std::ferror(stdin) != 0)
            throw Failure("cannot read standard input", ExitCode::kCannotOpen);
    } else {
        log.Add(JoinedWords(options.words));
    }
    log.Finish();
}

}  // namespace qv
