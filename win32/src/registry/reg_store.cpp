#include "registry/reg_store.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <utility>

#include "base/unique_fd.h"
#include "registry/reg_names.h"

namespace host {

namespace {

constexpr mode_t kFileMode = 0600;
constexpr mode_t kFolderMode = 0700;
constexpr off_t kLongLog = 256 << 10;
constexpr const char* kWriteLock = "120";  // its byte in the shared index, as /proc/locks has it

[[noreturn]] void ThrowReadOnly(const std::string& path) {
    throw RegError{ERROR_ACCESS_DENIED, path + ": it is read-only for this user"};
}

bool MayWriteTo(const std::string& path) {
    return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

void MakeFolders(const std::string& path) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), kFolderMode);
        if (end == std::string::npos) return;
    }
}

// The nearest folder above a missing one decides.
bool MayMakeIn(std::string folder) {
    while (folder.size() > 1 && access(folder.c_str(), F_OK) != 0 && errno == ENOENT) {
        folder.resize(std::max<std::size_t>(folder.rfind('/'), 1));
    }
    return MayWriteTo(folder);
}

}  // namespace

RegStore& RegStore::Get() {
    static RegStore& store = *new RegStore;
    return store;
}

// The locks of a connection are the process's, and the database's code knows the process's files:
// a child that inherited it would believe in locks that it does not have.
RegStore::RegStore() {
    pthread_atfork(
        [] {
            RegStore& store = Get();
            store.mutex_.lock();
            if (store.group_ != Group::kOpen) store.Close();
        },
        [] { Get().mutex_.unlock(); },
        [] {
            RegStore& store = Get();
            if (store.group_ == Group::kOpen) {
                store.group_ = Group::kInherited;
                store.lost_ = {ERROR_BUSY, "a group of changes was open when it forked"};
            }
            store.mutex_.unlock();
        });
}

void RegStore::FindPath() {
    if (host_root_.StillHolds() && !path_.empty()) return;
    if (!HasHostRoot()) throw RegError{ERROR_PATH_NOT_FOUND, {}};
    std::string path = HostRoot() + "/registry/registry.db";
    if (path == path_) return;
    Close();
    path_ = std::move(path);
}

void RegStore::Close() {
    memory_.Begin({});
    database_.reset();
    file_ = {};
    is_frozen_ = false;
    may_write_ = false;
}

// A file that this connection takes for frozen shows by size and time that it is not.
bool RegStore::IsOpen(const struct stat& now) const {
    if (database_ == nullptr || now.st_ino != file_.st_ino || now.st_dev != file_.st_dev)
        return false;
    return !is_frozen_ ||
           (now.st_size == file_.st_size && now.st_mtim.tv_sec == file_.st_mtim.tv_sec &&
            now.st_mtim.tv_nsec == file_.st_mtim.tv_nsec);
}

bool RegStore::HasTextFiles() const {
    const std::string folder = Folder();
    if (access(folder.c_str(), F_OK) != 0) return false;
    return std::ranges::any_of(RegRoots(), [&folder](const RegRoot& root) {
        return access((folder + '/' + root.text_file).c_str(), F_OK) == 0;
    });
}

bool RegStore::MayWrite() const {
    return database_ != nullptr ? may_write_ : MayMakeIn(Folder());
}

bool RegStore::Refresh(Use use, const CallRef<void()>& fill) {
    const bool is_lost = group_ == Group::kLost && use == Use::kWrite;
    if (is_lost || group_ == Group::kInherited) throw RegError(lost_);
    if (group_ == Group::kOpen) return false;
    bool made = false;
    FindPath();
    struct stat now;
    if (stat(path_.c_str(), &now) == 0) {
        if (!IsOpen(now)) made = Open(now, fill);
    } else if (errno != ENOENT) {
        ThrowErrno(path_);
    } else {
        if (file_.st_ino != 0) Close();
        if (database_ == nullptr && (use == Use::kWrite || HasTextFiles())) {
            made = Make(fill);
        }
    }
    if (use == Use::kWrite && !may_write_) ThrowReadOnly(path_);
    return made;
}

// A file that is there and holds nothing was about to be made by a process that was killed. With
// nobody to make it, it is as good as missing.
bool RegStore::Open(const struct stat& file, const CallRef<void()>& fill) {
    Close();
    const std::string log = path_ + "-wal", index = path_ + "-shm";
    may_write_ =
        MayWriteTo(path_) && (MayWriteTo(Folder()) || (MayWriteTo(log) && MayWriteTo(index)));
    is_frozen_ = !may_write_ && access(index.c_str(), R_OK) != 0;
    struct stat changes;
    if (is_frozen_ && stat(log.c_str(), &changes) == 0 && changes.st_size > 0) {
        throw RegError{ERROR_ACCESS_DENIED, index + ": it cannot be read"};
    }
    try {
        database_ = std::make_unique<RegDatabase>(
            path_, is_frozen_ ? RegDatabase::Kind::kFrozen : RegDatabase::Kind::kFile);
        file_ = file;
        const bool is_made = database_->IsMade();
        if (may_write_) database_->PrepareFile();
        if (!is_made && !may_write_) Close();
        return !is_made && may_write_ && FillNew(fill);
    } catch (...) {
        Close();
        throw;
    }
}

// In one transaction: another process may do the same.
bool RegStore::FillNew(const CallRef<void()>& fill) {
    database_->Begin();
    const bool is_new = !database_->IsMade();
    if (is_new) {
        database_->MakeTables();
        fill();
    }
    database_->Commit();
    if (is_new) database_->FinishFile();
    return is_new;
}

// Text files that cannot be taken over for good are taken into memory.
bool RegStore::Make(const CallRef<void()>& fill) {
    if (MayMakeIn(Folder())) {
        MakeFolders(Folder());
        UniqueFd made(open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
        if (!made && errno != EEXIST) ThrowErrno(path_);
        made = UniqueFd();
        struct stat file;
        if (stat(path_.c_str(), &file) != 0) ThrowErrno(path_);
        return Open(file, fill);
    }
    if (!HasTextFiles()) ThrowReadOnly(path_);
    database_ = std::make_unique<RegDatabase>(path_, RegDatabase::Kind::kMemory);
    try {
        FillNew(fill);
    } catch (...) {
        Close();
        throw;
    }
    return false;
}

std::string RegStore::LockHolder() const {
    struct stat index;
    if (stat((path_ + "-shm").c_str(), &index) != 0) return {};
    const std::string inode = ':' + std::to_string(index.st_ino);
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::string number, kind, mode, access, process, file, first, name;
        std::istringstream(line) >> number >> kind >> mode >> access >> process >> file >> first;
        if (!file.ends_with(inode) || first != kWriteLock) continue;
        std::ifstream("/proc/" + process + "/comm") >> name;
        return "process " + process + (name.empty() ? "" : " (" + name + ")");
    }
    return {};
}

void RegStore::FreeSpace() {
    if (database_ == nullptr || database_->InTransaction()) return;
    try {
        database_->TrimLog();
    } catch (const RegError&) {
        // Then it stays.
    }
}

void RegStore::BeginChanges() {
    group_ = Group::kAsked;
}

void RegStore::LoseGroup(const RegError& error) {
    if (group_ != Group::kAsked && group_ != Group::kOpen) return;
    group_ = Group::kLost;
    lost_ = error;
    if (database_ == nullptr || !database_->InTransaction()) return;
    database_->RollBack();
}

void RegStore::EndChanges(bool keep) {
    if (group_ == Group::kInherited) throw RegError(lost_);
    const Group group = std::exchange(group_, Group::kNone);
    if (group == Group::kLost) throw std::exchange(lost_, {});
    if (group == Group::kOpen) {
        keep ? database_->Commit() : database_->RollBack();
        KeepLogShort();
    }
}

void RegStore::KeepLogShort() {
    if (database_ != nullptr && database_->LogBytes() > kLongLog) FreeSpace();
}

// A user who may not write may have no part in the shared memory, and so no mark.
std::span<const BYTE> RegStore::Mark() {
    return database_ != nullptr && may_write_ ? database_->CommitMark() : std::span<const BYTE>();
}

RegDatabase* RegStore::ForQuery() {
    if (snapshot_ != nullptr && !snapshot_->hold_) snapshot_->Hold();
    return database_.get();
}

RegMemory* RegStore::Memory() {
    if (snapshot_ == nullptr || !memory_.IsOn() || group_ == Group::kOpen) return nullptr;
    snapshot_->has_used_memory_ |= !snapshot_->hold_;
    return &memory_;
}

// What is read under a mark is as new as the mark, or newer.
RegSnapshot::RegSnapshot(RegStore& store, std::int64_t key) : store_(store), key_(key) {
    const std::span<const BYTE> mark = store.Mark();
    if (!store.memory_.IsOf(mark)) store.memory_.Begin(mark);
    const bool is_known = store.group_ != RegStore::Group::kOpen && store.memory_.Find(key);
    if (!is_known) Hold();
    store.snapshot_ = this;
}

RegSnapshot::~RegSnapshot() {
    store_.snapshot_ = nullptr;
}

void RegSnapshot::Hold() {
    hold_.emplace(store_.Database(), kHoldRegKey);
    const bool is_root = key_ <= std::int64_t{kRegRoots};
    if (!hold_->Give(key_).Next() && !is_root) throw RegError{ERROR_KEY_DELETED, {}};
    if (!store_.memory_.IsOf(store_.Mark())) {
        store_.memory_.Begin({});
        if (has_used_memory_) throw RegStale{};
    } else if (store_.memory_.IsOn()) {
        store_.memory_.Add(key_);
    }
}

RegChange::RegChange(RegStore& store) : database_(*store.Database()), is_part_(store.InGroup()) {
    if (store.group_ != RegStore::Group::kOpen) database_.Begin();
    if (!is_part_) return;
    store.group_ = RegStore::Group::kOpen;
    database_.Run("SAVEPOINT part");
}

void RegChange::Keep() {
    if (is_part_) {
        database_.Run("RELEASE part");
    } else {
        database_.Commit();
    }
    is_kept_ = true;
}

// After some errors, a full disk's, the database has taken everything back already.
RegChange::~RegChange() {
    if (is_kept_ || !database_.InTransaction()) return;
    try {
        if (is_part_) {
            database_.Run("ROLLBACK TO part; RELEASE part");
        } else {
            database_.RollBack();
        }
    } catch (const RegError&) {
        // The transaction ends with the connection, or at the next process's start.
    }
}

}  // namespace host
