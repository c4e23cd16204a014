#include "journal/journal.h"

#include <windows.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>

#include "base/files.h"
#include "base/host.h"
#include "journal/journal_cut.h"
#include "journal/old_journal.h"
#include "mox_classes/containers/streams.h"
#include "os_xp/user_name.h"

namespace qv {

namespace {

using Seconds = std::chrono::seconds;

constexpr Seconds kUsualWait(10);
constexpr DWORD kLockPauseMilliseconds = 20;
constexpr const char* kForever = "true";   // the parser's value for --wait without a number
constexpr std::int64_t kTailSize = 65536;  // bytes that are first searched for the newest change
constexpr std::size_t kLongestHead = 4096;
constexpr std::size_t kLongestCommand = 4000;  // bytes of it that are kept

std::filesystem::path PathOf(const std::string& utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}

std::string FileInFolder(const char* name) {
    return ToUtf8(UnicodeString(FromUtf8(UserDataFolder()) + TEXT("/") + UnicodeString(name)));
}
std::string JournalName() {
    return FileInFolder("changes.jsonl");
}
std::string OldJournalName() {
    return FileInFolder("settings_journal.json");
}

// An empty file counts as missing: a crash of the system can leave one.
bool Exists(const std::string& name) {
    std::error_code error;
    const auto size = std::filesystem::file_size(PathOf(name), error);
    return !error && size > 0;
}

[[noreturn]] void CannotUse(const std::string& reason) {
    throw Failure("the journal in '" + UserDataFolder() + "' cannot be used: " + reason,
                  ExitCode::kCannotOpen);
}

std::string LastError() {
    return SystemText(GetLastError());
}

[[noreturn]] void IsNoJournal(const std::string& name) {
    throw Failure(Quoted(name) + " is no journal, or damaged; move it away to go on without it",
                  ExitCode::kDamaged);
}

void CheckHead(std::string_view bytes) {
    const JournalHead head = ExamineHead(bytes);
    if (head == JournalHead::kNone) IsNoJournal(JournalName());
    if (head == JournalHead::kNewer)
        throw Failure(Quoted(JournalName()) + " is the journal of a newer qv", ExitCode::kDamaged);
}

std::string CurrentTime() {
    FILETIME now;
    SYSTEMTIME t = {};
    GetSystemTimeAsFileTime(&now);
    FileTimeToSystemTime(&now, &t);
    char text[64];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02uT%02u:%02u:%02uZ", unsigned{t.wYear},
                  unsigned{t.wMonth}, unsigned{t.wDay}, unsigned{t.wHour}, unsigned{t.wMinute},
                  unsigned{t.wSecond});
    return text;
}

// This program's command line, without the folder of the program. A very long one is cut.
std::vector<std::string> ThisCommand() {
    std::vector<std::string> words = CommandWords();
    if (!words.empty()) words.front() = "qv";
    std::size_t left = kLongestCommand;
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::string word = ToUtf8(FromUtf8(words[i]));
        if (word.size() > left) {
            words.resize(i);
            words.emplace_back("...");
            break;
        }
        left -= word.size();
        words[i] = std::move(word);
    }
    return words;
}

// Returns nullopt for no limit.
std::optional<Seconds> TimeToWait(const JournalWait& wait) {
    if (wait.seconds.empty()) return kUsualWait;
    if (wait.seconds == kForever) return {};
    int seconds = 0;
    const char* const end = wait.seconds.data() + wait.seconds.size();
    const auto parsed = std::from_chars(wait.seconds.data(), end, seconds);
    if (parsed.ec != std::errc() || parsed.ptr != end || seconds < 0)
        throw CLI::ValidationError("--wait", Quoted(wait.seconds) + " is no number of seconds");
    return Seconds(seconds);
}

// Opens the lock file, which no other program can open then. Waits for at most `patience`, or
// without limit. Throws Failure.
System::TFileHandle Lock(const std::optional<Seconds>& patience) {
    std::error_code error;
    std::filesystem::create_directories(PathOf(UserDataFolder()), error);
    if (error) CannotUse(error.message());
    const UnicodeString name = FromUtf8(FileInFolder("changes.lock"));
    const auto start = std::chrono::steady_clock::now();
    while (true) {
        System::TFileHandle lock(CreateFileW(name.t_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                             OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (lock) return lock;
        if (GetLastError() != ERROR_SHARING_VIOLATION) CannotUse(LastError());
        if (patience && std::chrono::steady_clock::now() - start >= *patience)
            CannotUse("another program changes settings; --wait waits for its end");
        Sleep(kLockPauseMilliseconds);
    }
}

// The bytes of a new journal, with the changes of the old format if there are any.
std::string FirstLines() {
    std::string lines = HeadLine();
    if (!Exists(OldJournalName())) return lines;
    const std::string bytes = ReadAll(OldJournalName());
    try {
        for (const ChangeRecord& change : ReadOldJournal(bytes)) {
            lines += BeginLine(change);
            for (const TargetChange& target : change.targets)
                lines += TargetLine(change.number, target);
            lines += EndLine(change.number, change.state);
        }
    } catch (const std::exception&) {
        IsNoJournal(OldJournalName());
    }
    return lines;
}

// The newest change in the complete lines, or nullopt. The bytes may begin in the middle of a line.
std::optional<std::uint64_t> NewestIn(std::string_view lines) {
    while (!lines.empty()) {
        lines.remove_suffix(1);
        const std::size_t begin = lines.rfind('\n') + 1;
        if (const auto change = ChangeOfLine(lines.substr(begin))) return change;
        lines = lines.substr(0, begin);
    }
    return {};
}

}  // namespace

void AddWaitOption(CLI::App& command, JournalWait& wait) {
    command.add_flag(
        "--wait", wait.seconds,
        "Wait without a limit while another program changes settings, or --wait=SECONDS; the "
        "default is 10 seconds");
}

JournalContent LoadJournal() {
    const std::string bytes = Exists(JournalName()) ? ReadAll(JournalName()) : FirstLines();
    CheckHead(bytes);
    return ReadJournal(bytes);
}

Journal::Journal(const JournalWait& wait) : lock_(Lock(TimeToWait(wait))) {
    try {
        Open();
    } catch (const UnicodeString& reason) {
        CannotUse(OneLine(reason.Trim()));
    }
}

// Searches from the end, so that the time does not grow with the file.
void Journal::Open() {
    if (!Exists(JournalName())) WriteWhole(JournalName(), FirstLines());
    CutJournal(JournalName());
    file_ = System::TFileHandle(CreateFileW(FromUtf8(JournalName()).t_str(),
                                            GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file_) CannotUse(LastError());
    Classes::THandleStream stream(file_.Get());
    const std::int64_t size = stream.GetSize();
    std::string bytes(static_cast<std::size_t>(std::min<std::int64_t>(size, kLongestHead)), '\0');
    stream.SetPosition(0);
    stream.ReadBuffer(bytes.data(), static_cast<int>(bytes.size()));
    CheckHead(bytes);
    for (std::int64_t length = std::min(size, kTailSize);; length = std::min(size, length * 8)) {
        bytes.resize(static_cast<std::size_t>(length));
        stream.SetPosition(size - length);
        stream.ReadBuffer(bytes.data(), static_cast<int>(bytes.size()));
        const std::size_t whole = bytes.rfind('\n');
        const std::size_t end = whole == std::string::npos ? 0 : whole + 1;
        const auto newest = NewestIn(std::string_view(bytes).substr(0, end));
        if (!newest && length < size) continue;
        last_ = newest.value_or(0);
        // A killed program may have left half a line. Nothing was changed because of it.
        if (end < bytes.size())
            stream.SetSize(size - static_cast<std::int64_t>(bytes.size() - end));
        return;
    }
}

void Journal::Append(const std::string& lines) {
    Classes::THandleStream stream(file_.Get());
    const std::int64_t size = stream.GetSize();
    try {
        stream.SetPosition(size);
        stream.WriteBuffer(lines.data(), static_cast<int>(lines.size()));
    } catch (const UnicodeString& reason) {
        const std::string text = OneLine(reason.Trim());
        try {
            stream.SetSize(size);
        } catch (const UnicodeString&) {
            // The next program that opens the journal removes the unfinished line.
        }
        CannotUse(text);
    }
    const DWORD code = FlushToDisk(FromUtf8(JournalName()), file_.Get());
    if (code != NO_ERROR) CannotUse(SystemText(code));
}

std::uint64_t Journal::Begin(std::vector<TargetChange> targets, std::uint64_t undoes) {
    ChangeRecord change;
    change.number = last_ + 1;
    if (change.number > kLargestNumber) CannotUse("its numbers are used up; move it away to go on");
    change.time = CurrentTime();
    change.user = ToUtf8(::GetUserNameW(false));
    change.host = GetHostFacts().machine;
    change.process = GetCurrentProcessId();
    change.command = ThisCommand();
    change.undoes = undoes;
    std::string lines = BeginLine(change);
    for (const TargetChange& target : targets) lines += TargetLine(change.number, target);
    Append(lines);
    return last_ = change.number;
}

void Journal::End(std::uint64_t change, const std::vector<TargetChange>& differing,
                  ChangeState state) {
    std::string lines;
    for (const TargetChange& target : differing) lines += TargetLine(change, target);
    Append(lines + EndLine(change, state));
}

}  // namespace qv
