#include "registry/reg_hive.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "base/os_error.h"
#include "registry/reg_entries.h"
#include "registry/reg_text.h"
#include "root/host_path.h"
#include "root/host_root.h"
#include "text/case_fold.h"

namespace host {

namespace {

constexpr off_t kMaxFileBytes = off_t{4} << 30;
constexpr std::size_t kFewStates = 64;
constexpr mode_t kFileMode = 0600;
constexpr mode_t kFolderMode = 0700;

LSTATUS CodeFromErrno() {
    return static_cast<LSTATUS>(ErrorFromErrno(errno));
}

std::string RegistryFolder() {
    return HostRoot() + "/registry";
}

bool SameTime(const struct timespec& a, const struct timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool SameVersion(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           SameTime(a.st_mtim, b.st_mtim) && SameTime(a.st_ctim, b.st_ctim);
}

void MakeFolders(const std::string& path) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), kFolderMode);
        if (end == std::string::npos) return;
    }
}

// Waits until this process is the one that changes the registry; closing the file ends that.
LSTATUS LockRegistry(UniqueFd& lock) {
    const std::string folder = RegistryFolder();
    const std::string name = folder + "/lock";
    constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC;
    lock = UniqueFd(open(name.c_str(), kFlags, kFileMode));
    if (!lock && errno == ENOENT) {
        MakeFolders(folder);
        lock = UniqueFd(open(name.c_str(), kFlags, kFileMode));
    }
    if (!lock) return CodeFromErrno();
    while (flock(lock.get(), LOCK_EX) != 0) {
        if (errno != EINTR) return CodeFromErrno();
    }
    return ERROR_SUCCESS;
}

}  // namespace

std::mutex& RegistryMutex() {
    static std::mutex mutex;
    return mutex;
}

LSTATUS ReadWholeFile(int fd, std::string& bytes) {
    struct stat info;
    if (fstat(fd, &info) != 0) return CodeFromErrno();
    if (!S_ISREG(info.st_mode)) return ERROR_CANTREAD;
    if (info.st_size > kMaxFileBytes) return ERROR_NOT_ENOUGH_MEMORY;
    bytes.resize(static_cast<std::size_t>(info.st_size));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got =
            pread(fd, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return CodeFromErrno();
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    return ERROR_SUCCESS;
}

LSTATUS WriteWholeFile(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t put = write(fd, bytes.data(), bytes.size());
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return CodeFromErrno();
        bytes.remove_prefix(static_cast<std::size_t>(put));
    }
    return ERROR_SUCCESS;
}

FILETIME RegHive::Written() const {
    if (!file_) return {};
    constexpr std::uint64_t kSecondsTo1970 = 11644473600;
    const auto seconds = static_cast<std::uint64_t>(stamp_.st_mtim.tv_sec) + kSecondsTo1970;
    const std::uint64_t ticks =
        seconds * 10000000 + static_cast<std::uint64_t>(stamp_.st_mtim.tv_nsec) / 100;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

void RegHive::Forget() {
    ++generation_;
    root_.Clear();
    is_read_ = false;
    file_ = UniqueFd();
    status_ = ERROR_SUCCESS;
    problem_.clear();
}

// Sets path_ unless it is what the environment asks for. False for a root without a file name.
bool RegHive::FindFileName() {
    if (host_root_.StillHolds() && !path_.empty()) return true;
    std::string utf8;
    if (!NameToUtf8(name_, utf8)) return false;
    std::string path = RegistryFolder() + '/' + utf8 + ".reg";
    if (path == path_) return true;
    Forget();
    path_ = std::move(path);
    return true;
}

LSTATUS RegHive::Refresh() {
    if (!FindFileName()) return ERROR_INVALID_NAME;
    struct stat now;
    if (stat(path_.c_str(), &now) == 0) {
        return file_ && is_read_ && SameVersion(now, stamp_) ? status_ : Load();
    }
    if (errno != ENOENT) return CodeFromErrno();
    if (file_ || !is_read_) Forget();
    is_read_ = true;
    return ERROR_SUCCESS;
}

LSTATUS RegHive::Load() {
    Forget();
    UniqueFd file(open(path_.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file || fstat(file.get(), &stamp_) != 0) return CodeFromErrno();
    std::string bytes;
    const LSTATUS code = ReadWholeFile(file.get(), bytes);
    if (code != ERROR_SUCCESS) return code;
    try {
        RegEntryRunner runner([this](std::u16string_view name) {
            return SameFileName(name, name_) ? &root_ : nullptr;
        });
        ReadRegText(bytes, [&runner](const RegEntry& entry) { runner.Run(entry); });
    } catch (const RegTextError& error) {
        root_.Clear();
        problem_ = path_ + ", " + error.what();
        status_ = ERROR_BADDB;
    } catch (...) {
        Forget();
        throw;
    }
    is_read_ = true;
    file_ = std::move(file);
    return status_;
}

LSTATUS RegHive::Save() {
    RegTextWriter writer;
    WriteRegKey(root_, name_, writer);
    const std::string next = path_ + ".new";
    UniqueFd file(open(next.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, kFileMode));
    if (!file) return CodeFromErrno();
    const LSTATUS code = WriteWholeFile(file.get(), writer.Take());
    if (code != ERROR_SUCCESS) return code;
    if (fstat(file.get(), &stamp_) != 0) return CodeFromErrno();
    if (rename(next.c_str(), path_.c_str()) != 0) return CodeFromErrno();
    // The rename changed nothing of the file but the time of its last change.
    struct stat renamed;
    if (fstat(file.get(), &renamed) == 0) stamp_.st_ctim = renamed.st_ctim;
    file_ = std::move(file);
    return ERROR_SUCCESS;
}

LSTATUS RegHive::Change(const CallRef<LSTATUS(bool& changed)>& change) {
    UniqueFd lock;
    LSTATUS code = LockRegistry(lock);
    if (code == ERROR_SUCCESS) code = Refresh();
    if (code != ERROR_SUCCESS) return code;
    bool changed = false;
    try {
        code = change(changed);
        if (changed) ++generation_;
        if (changed && code == ERROR_SUCCESS) code = Save();
    } catch (...) {
        Forget();
        throw;
    }
    if (changed && code != ERROR_SUCCESS) Forget();
    return code;
}

std::shared_ptr<KeyState> RegHive::Open(RegPath path) {
    // Of closed keys nothing is kept for long; many open ones are not looked through every time.
    if (states_.size() < kFewStates || states_.size() == states_.capacity()) {
        std::erase_if(states_, [](const auto& state) { return state.expired(); });
        states_.reserve(std::max(kFewStates, states_.size() * 2));
    }
    auto state = std::make_shared<KeyState>();
    state->path = std::move(path);
    states_.push_back(state);
    return state;
}

RegKey* RegHive::Find(KeyState& state) {
    if (state.deleted) return nullptr;
    if (state.key == nullptr || state.generation != generation_) {
        state.key = root_.FindPath(state.path);
        state.generation = generation_;
    }
    return state.key;
}

void RegHive::MarkDeleted(const RegPath& path, bool itself) {
    for (const auto& weak : states_) {
        const auto state = weak.lock();
        if (state == nullptr || state->path.size() < path.size() + (itself ? 0 : 1)) continue;
        state->deleted |=
            std::equal(path.begin(), path.end(), state->path.begin(),
                       [](const auto& a, const auto& b) { return SameFileName(a, b); });
    }
}

}  // namespace host
