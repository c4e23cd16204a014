#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <memory>

#include "base/commands.h"
#include "base/console.h"
#include "base/host.h"
#include "mox_classes/memory/handles.h"
#include "mox_classes/text/sysutils_platform.h"

namespace qv {

namespace {

HANDLE StandardHandle(Stream stream) {
    switch (stream) {
        case Stream::kInput:
            return GetStdHandle(STD_INPUT_HANDLE);
        case Stream::kOutput:
            return GetStdHandle(STD_OUTPUT_HANDLE);
        default:
            return GetStdHandle(STD_ERROR_HANDLE);
    }
}

std::atomic<bool>& StopIsRequested() {
    static std::atomic<bool> is_requested;
    return is_requested;
}

// The first request is only noted. The second one goes to the system, which ends the program.
BOOL WINAPI OnStop(DWORD /*kind*/) {
    return StopIsRequested().exchange(true) ? FALSE : TRUE;
}

// Switches the console to UTF-8 and colours. Other programs share the console, so the destructor
// restores it.
class ConsoleForm {
  public:
    ConsoleForm() {
        SetConsoleOutputCP(CP_UTF8);
        // Older consoles understand colours only in this mode.
        if (has_mode_) SetConsoleMode(output_, mode_ | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
    ~ConsoleForm() {
        if (has_mode_) SetConsoleMode(output_, mode_);
        if (code_page_ != 0) SetConsoleOutputCP(code_page_);
    }
    ConsoleForm(const ConsoleForm&) = delete;
    ConsoleForm& operator=(const ConsoleForm&) = delete;

  private:
    const UINT code_page_ = GetConsoleOutputCP();
    const HANDLE output_ = StandardHandle(Stream::kOutput);
    DWORD mode_ = 0;
    const bool has_mode_ = GetConsoleMode(output_, &mode_) != FALSE;
};

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;  // seconds

FILETIME ToFileTime(std::int64_t seconds) {
    const auto ticks = static_cast<std::uint64_t>((seconds + kFrom1601To1970) * kTicksPerSecond);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::int64_t ToSeconds(const FILETIME& time) {
    const auto ticks = std::int64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    return ticks / kTicksPerSecond - kFrom1601To1970;
}

}  // namespace

// Drops quotes and keeps backslashes. The words that are compared contain neither.
EarlyArguments::EarlyArguments() {
    std::size_t size = 0, begin = 0;
    bool quoted = false, is_program = true;
    for (const char* at = GetCommandLineA();; ++at) {
        const bool ends = *at == 0 || size == text_.size();
        if (ends || ((*at == ' ' || *at == '\t') && !quoted)) {
            if (size > begin && !is_program) Add({text_.data() + begin, size - begin});
            if (size > begin) is_program = false;
            begin = size;
            if (ends) return;
        } else if (*at == '"') {
            quoted = !quoted;
        } else {
            text_[size++] = *at;
        }
    }
}

bool IsTerminal(Stream stream) {
    DWORD mode = 0;
    return GetConsoleMode(StandardHandle(stream), &mode) != FALSE;
}

bool OutputHasNoReader() {
    const DWORD error = GetLastError();
    return error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE;
}

std::vector<std::string> PrepareConsole(int /*argc*/, char** /*argv*/) {
    for (std::FILE* stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
    static const ConsoleForm form;
    return CommandWords();
}

std::vector<std::string> CommandWords() {
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> list(
        CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) arguments.push_back(ToUtf8(list.get()[i]));
    return arguments;
}

std::vector<std::string> FilesNamed(const std::string& name) {
    const std::size_t slash = name.find_last_of("\\/");
    const std::size_t last = slash == std::string::npos ? 0 : slash + 1;
    std::vector<std::string> names;
    WIN32_FIND_DATAW found;
    if (name.find_first_of("*?", last) == std::string::npos) return {name};
    const System::TSearchHandle search(FindFirstFileW(FromUtf8(name).t_str(), &found));
    for (bool is_there = bool(search); is_there; is_there = FindNextFileW(search.Get(), &found)) {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            names.push_back(name.substr(0, last) + ToUtf8(found.cFileName));
    }
    if (names.empty()) return {name};
    std::ranges::sort(names);
    return names;
}

StopRequest::StopRequest() {
    StopIsRequested() = false;
    SetConsoleCtrlHandler(OnStop, TRUE);
}

StopRequest::~StopRequest() {
    SetConsoleCtrlHandler(OnStop, FALSE);
}

bool StopRequest::IsMade() const {
    return StopIsRequested();
}

DWORD FlushToDisk(const UnicodeString& /*name*/, HANDLE file) {
    return FlushFileBuffers(file) ? DWORD{NO_ERROR} : GetLastError();
}

FilePlace FindFile(const UnicodeString& name) {
    const DWORD attributes = GetFileAttributesW(name.t_str());
    const System::TFileHandle file(CreateFileW(name.t_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                               nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                                               nullptr));
    if (file && GetFileType(file.Get()) != FILE_TYPE_DISK) return {FileKind::kStream, name};
    if (attributes == INVALID_FILE_ATTRIBUTES) return {FileKind::kNone, name};
    const bool is_folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return {is_folder ? FileKind::kFolder : FileKind::kFile, name};
}

void TakeAccess(const UnicodeString& /*file*/, const UnicodeString& /*model*/) {}

DWORD MoveInPlace(const UnicodeString& from, const UnicodeString& to, bool replace) {
    const DWORD flags = MOVEFILE_WRITE_THROUGH | (replace ? MOVEFILE_REPLACE_EXISTING : 0);
    return MoveFileExW(from.t_str(), to.t_str(), flags) ? DWORD{NO_ERROR} : GetLastError();
}

// The system does not tell who holds a lock.
std::string LockHolders(const UnicodeString&) {
    return "one of the processes that the Resource Monitor shows for this file";
}

// Uses the daylight-saving rules of that moment, not those of today.
std::int64_t LocalOffset(std::int64_t utc) {
    const FILETIME moment = ToFileTime(utc);
    SYSTEMTIME universal, local;
    FILETIME local_moment;
    if (!FileTimeToSystemTime(&moment, &universal) ||
        !SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) ||
        !SystemTimeToFileTime(&local, &local_moment)) {
        return 0;
    }
    return ToSeconds(local_moment) - utc;
}

HostFacts GetHostFacts() {
    HostFacts facts;
    WCHAR text[MAX_PATH * 4] = {};
    constexpr DWORD kRoom = MAX_PATH * 4;
    const DWORD length = GetModuleFileNameW(GetModuleHandleW(L"qv_rtl.dll"), text, kRoom);
    if (length > 0 && length < kRoom) facts.library = ToUtf8(UnicodeString(text));
    DWORD size = kRoom;
    if (GetComputerNameW(text, &size)) facts.machine = ToUtf8(UnicodeString(text));
    return facts;
}

std::string UserDataFolder() {
    const UnicodeString folder = Sysutils::GetEnvExpanded(TEXT("%LOCALAPPDATA%"));
    if (folder.Length() == 0 || folder == UnicodeString(TEXT("%LOCALAPPDATA%")))
        throw Failure("LOCALAPPDATA is not set", ExitCode::kCannotOpen);
    return ToUtf8(folder) + "\\Halvorn\\Vantrel\\qv";
}

RegistryState ExamineRegistryStore() {
    return {};
}

ChangeGroup::ChangeGroup() = default;
ChangeGroup::~ChangeGroup() = default;

DWORD ChangeGroup::Keep() {
    is_open_ = false;
    return NO_ERROR;
}

std::string HostProblem() {
    return "";
}

void AddHostCommands(CLI::App& /*app*/) {}

}  // namespace qv
