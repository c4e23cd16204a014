// The Linux side of the tool.
#include <dlfcn.h>
#include <fcntl.h>
#include <qv_host.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "base/console.h"
#include "base/host.h"
#include "qv_rtl_main/runtime_version.h"

namespace qv {

namespace {

constexpr DWORD kMessageSize = 1024;

// The folder that stands in for a Windows machine, or nothing.
std::string HostRoot() {
    WCHAR folder[4096];
    const DWORD length = QvHostRoot(folder, 4096);
    return length == 0 || length >= 4096 ? std::string() : ToUtf8(UnicodeString(folder));
}

constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<bool>& StopIsRequested() {
    static std::atomic<bool> is_requested;
    return is_requested;
}

// A signal that is ignored (SIGHUP under nohup) stays ignored.
void SetHandlers(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int signal : kStopSignals) {
        struct sigaction before {};
        sigaction(signal, &action, &before);
        if (before.sa_handler == SIG_IGN) sigaction(signal, &before, nullptr);
    }
}

std::string HostPath(const UnicodeString& name) {
    std::string path(QvHostPath(name.t_str(), nullptr, 0), '\0');
    path.resize(QvHostPath(name.t_str(), path.data(), static_cast<DWORD>(path.size())));
    return path;
}

bool Flush(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool done = file >= 0 && fsync(file) == 0;
    if (file >= 0) close(file);
    return done;
}

// Renames without a flush. False with errno set.
bool Rename(const std::string& from, const std::string& to, bool replace) {
    const unsigned flags = replace ? 0 : RENAME_NOREPLACE;
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0) return true;
    // Some file systems know links, but not the flag.
    if (errno != EINVAL || link(from.c_str(), to.c_str()) != 0) return false;
    unlink(from.c_str());
    return true;
}

std::string FirstLineOf(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

// Reads a line such as "lock: 1: OFDLCK ADVISORY WRITE -1 fe:01:4711 0 95".
bool HasLock(const std::filesystem::path& descriptor, ino_t file) {
    const std::string inode = ":" + std::to_string(file) + " 0 ";
    std::ifstream stream(descriptor);
    for (std::string line; std::getline(stream, line);) {
        if (line.rfind("lock:", 0) == 0 && line.find(" WRITE ") != std::string::npos &&
            line.find(inode) != std::string::npos) {
            return true;
        }
    }
    return false;
}

bool HoldsLock(const std::filesystem::path& process, ino_t file) {
    std::error_code ignored;
    const std::filesystem::directory_iterator descriptors(process / "fdinfo", ignored);
    return std::any_of(begin(descriptors), end(descriptors),
                       [&](const auto& entry) { return HasLock(entry.path(), file); });
}

}  // namespace

// cppcheck-suppress uninitMemberVar ; read only as far as it was written
EarlyArguments::EarlyArguments() {
    const int file = open("/proc/self/cmdline", O_RDONLY | O_CLOEXEC);
    const ssize_t size = file < 0 ? 0 : read(file, text_.data(), text_.size());
    if (file >= 0) close(file);
    // Each argument ends with a zero; the first is the program.
    std::string_view left(text_.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
    for (bool is_program = true; !left.empty(); is_program = false) {
        const std::size_t end = std::min(left.find('\0'), left.size());
        if (!is_program) Add(left.substr(0, end));
        left.remove_prefix(std::min(end + 1, left.size()));
    }
}

bool IsTerminal(Stream stream) {
    return isatty(static_cast<int>(stream)) != 0;
}

bool OutputHasNoReader() {
    return errno == EPIPE;
}

std::vector<std::string> PrepareConsole(int argc, char** argv) {
    // A closed pipe makes the write fail instead of killing the program in the middle of its work.
    std::signal(SIGPIPE, SIG_IGN);
    // The host has said why.
    if (HostRoot().empty()) throw Failure("", ExitCode::kCannotOpen);
    return {argv, argv + argc};
}

std::vector<std::string> FilesNamed(const std::string& name) {
    return {name};
}

std::vector<std::string> CommandWords() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::vector<std::string> words;
    for (std::string word; std::getline(file, word, '\0');) words.push_back(std::move(word));
    return words;
}

StopRequest::StopRequest() {
    StopIsRequested() = false;
    SetHandlers([](int) { StopIsRequested() = true; });
}

StopRequest::~StopRequest() {
    SetHandlers(SIG_DFL);
}

bool StopRequest::IsMade() const {
    return StopIsRequested();
}

DWORD FlushToDisk(const UnicodeString& name, HANDLE /*file*/) {
    return Flush(HostPath(name)) ? DWORD{NO_ERROR} : DWORD{ERROR_WRITE_FAULT};
}

FilePlace FindFile(const UnicodeString& name) {
    const std::filesystem::path path = HostPath(name);
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) return {FileKind::kNone, name};
    if (std::filesystem::is_directory(status)) return {FileKind::kFolder, name};
    if (!std::filesystem::is_regular_file(status)) return {FileKind::kStream, name};
    if (!std::filesystem::is_symlink(path, error)) return {FileKind::kFile, name};
    const std::filesystem::path target = std::filesystem::canonical(path, error);
    return {FileKind::kFile, error ? name : FromUtf8(target)};
}

void TakeAccess(const UnicodeString& file, const UnicodeString& model) {
    struct stat info {};
    if (stat(HostPath(model).c_str(), &info) != 0) return;
    const std::string path = HostPath(file);
    mode_t mode = info.st_mode & ACCESSPERMS;
    constexpr auto kSameOwner = static_cast<uid_t>(-1);
    const bool has_group = chown(path.c_str(), info.st_uid, info.st_gid) == 0 ||
                           chown(path.c_str(), kSameOwner, info.st_gid) == 0;
    // What the group may is not for the members of another one.
    if (!has_group) mode &= ~mode_t{S_IRWXG};
    chmod(path.c_str(), mode);
}

DWORD MoveInPlace(const UnicodeString& from, const UnicodeString& to, bool replace) {
    const std::string target = HostPath(to);
    if (!Rename(HostPath(from), target, replace)) {
        if (errno == EEXIST) return ERROR_FILE_EXISTS;
        return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ERROR_ACCESS_DENIED;
    }
    // Where a folder cannot be flushed, a power failure may bring the old file back.
    const std::filesystem::path folder = std::filesystem::path(target).parent_path();
    Flush(folder.empty() ? "." : folder.string());
    return NO_ERROR;
}

std::string LockHolders(const UnicodeString& file) {
    struct stat info {};
    if (stat(HostPath(file).c_str(), &info) != 0) return "nobody";
    std::string holders;
    std::error_code ignored;
    for (const auto& process : std::filesystem::directory_iterator("/proc", ignored)) {
        const std::string id = process.path().filename();
        const bool is_process = id.find_first_not_of("0123456789") == std::string::npos;
        if (!is_process || !HoldsLock(process.path(), info.st_ino)) continue;
        holders += (holders.empty() ? "process " : ", ") + id + " (" +
                   FirstLineOf(process.path() / "comm") + ")";
    }
    return holders.empty() ? "a process of another user" : holders;
}

std::int64_t LocalOffset(std::int64_t utc) {
    const std::time_t moment = utc;
    std::tm local{};
    return localtime_r(&moment, &local) == nullptr ? 0 : local.tm_gmtoff;
}

HostFacts GetHostFacts() {
    HostFacts facts;
    Dl_info library{};
    if (dladdr(reinterpret_cast<const void*>(&QVRtlVersion), &library) != 0)
        facts.library = library.dli_fname;
    char machine[256] = {};
    if (gethostname(machine, sizeof(machine) - 1) == 0) facts.machine = machine;
    facts.root = HostRoot();
    return facts;
}

RegistryState ExamineRegistryStore() {
    RegistryState state;
    WCHAR damage[kMessageSize] = {};
    if (!QvHostCheckRegistry(damage, kMessageSize)) state.damage = OneLine(UnicodeString(damage));
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(HostRoot() + "/registry", ignored))
        if (entry.path().extension() == ".taken_over")
            state.old_files.push_back(entry.path().string());
    std::ranges::sort(state.old_files);
    return state;
}

ChangeGroup::ChangeGroup() {
    QvHostBeginChanges();
}

ChangeGroup::~ChangeGroup() {
    if (is_open_) QvHostEndChanges(FALSE);
}

DWORD ChangeGroup::Keep() {
    is_open_ = false;
    return QvHostEndChanges(TRUE) ? DWORD{NO_ERROR} : GetLastError();
}

std::string HostProblem() {
    WCHAR problem[kMessageSize] = {};
    const DWORD length = QvHostProblem(problem, kMessageSize);
    return length < kMessageSize ? OneLine(UnicodeString(problem)) : "";
}

// The journal lies beside the registry that it describes: another host root is another machine.
std::string UserDataFolder() {
    const std::string root = HostRoot();
    if (root.empty()) throw Failure("the host root is not known", ExitCode::kCannotOpen);
    return root + "/qv";
}

}  // namespace qv
