// The registry's store: the database registry/registry.db under the host root, the one connection
// that this process has to it, snapshots for reading and transactions for changes.
//
// Every member but Get() and Mutex() is used with the mutex held; failures throw RegError. Nobody
// waits in here: what meets another process's lock throws ERROR_BUSY, and the caller tries again
// without the mutex. The connection ends before a fork, so that parent and child each open their
// own.
#pragma once

#include <sys/stat.h>
#include <windows.h>

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/call_ref.h"
#include "registry/reg_database.h"
#include "registry/reg_memory.h"
#include "root/host_root.h"

namespace host {

class RegSnapshot;

class RegStore {
  public:
    // Never destroyed: a library that unloads at process exit may still read the registry.
    static RegStore& Get();
    std::mutex& Mutex() { return mutex_; }

    enum class Use { kRead, kWrite };
    // Makes the connection the one to the file that is there now. A missing store is made when it
    // is to be written or text files of an earlier version lie in its place; `fill` runs in the
    // transaction that makes it, and the result says that this was so. Without a store there are
    // the roots alone.
    bool Refresh(Use use, const CallRef<void()>& fill);
    // Whether this user may change the registry, as far as the file system tells.
    bool MayWrite() const;

    // Null when there is no store.
    RegDatabase* Database() const { return database_.get(); }
    // Where the store lies, whether or not it exists. After Refresh.
    const std::string& Path() const { return path_; }
    // Who holds the lock that all changes take, for a person; empty when the system does not tell.
    std::string LockHolder() const;

    // Gives back what the log of changes takes on the disk, as far as nobody needs it. Fails in
    // silence.
    void FreeSpace();

    // After a large change: whoever is the first to open the store reads the whole log of changes.
    void KeepLogShort();

    // Many changes as one: from Begin on, what this process changes becomes one transaction, which
    // End keeps or takes back. One thread; not nested. A group that is lost fails from then on, and
    // at its end, with the error given.
    void BeginChanges();
    void EndChanges(bool keep);
    bool InGroup() const { return group_ != Group::kNone; }
    bool InLostGroup() const { return group_ == Group::kLost || group_ == Group::kInherited; }
    void LoseGroup(const RegError& error);

    // What was wrong when a call failed last, for a person; empty after one that went well.
    std::string& Problem() { return problem_; }

    // The database, for a query: within the snapshot that is open, if any.
    RegDatabase* ForQuery();
    // What may stand for a query in the snapshot that is open; null outside of one and in changes.
    RegMemory* Memory();

  private:
    friend class RegSnapshot;
    friend class RegChange;
    // kInherited: the parent was in the middle of a group when it forked; for good.
    enum class Group { kNone, kAsked, kOpen, kLost, kInherited };

    RegStore();
    void FindPath();
    bool Open(const struct stat& file, const CallRef<void()>& fill);
    bool Make(const CallRef<void()>& fill);
    bool FillNew(const CallRef<void()>& fill);
    void Close();
    bool IsOpen(const struct stat& now) const;
    bool HasTextFiles() const;
    std::string Folder() const { return path_.substr(0, path_.rfind('/')); }
    std::span<const BYTE> Mark();

    std::mutex mutex_;
    HostRootKey host_root_;
    std::string path_;
    std::unique_ptr<RegDatabase> database_;
    struct stat file_ = {};  // the one that is open; all zero when there is none
    bool is_frozen_ = false;
    bool may_write_ = false;
    Group group_ = Group::kNone;
    RegError lost_{};  // why the group is lost
    std::string problem_;
    RegMemory memory_;
    RegSnapshot* snapshot_ = nullptr;  // that is open
};

// Whether a key is there. A statement in use holds the snapshot.
inline constexpr char kHoldRegKey[] = "SELECT 1 FROM reg_keys WHERE id = ?1";

// What was remembered is no longer what the store holds: the read has to begin again.
struct RegStale {};

// The registry at one moment, while it lives. Throws ERROR_KEY_DELETED when the key is gone. The
// database is asked only for what is not remembered; where the two may be of different moments
// RegStale is thrown, with the first query only.
class RegSnapshot {
  public:
    RegSnapshot(RegStore& store, std::int64_t key);
    RegSnapshot(const RegSnapshot&) = delete;
    RegSnapshot& operator=(const RegSnapshot&) = delete;
    ~RegSnapshot();

  private:
    friend class RegStore;
    void Hold();

    RegStore& store_;
    const std::int64_t key_;
    bool has_used_memory_ = false;
    std::optional<RegQuery> hold_;
};

// One transaction, or a part of the group that is open. The end takes it back unless it was kept.
class RegChange {
  public:
    explicit RegChange(RegStore& store);
    RegChange(const RegChange&) = delete;
    RegChange& operator=(const RegChange&) = delete;
    ~RegChange();
    void Keep();

  private:
    RegDatabase& database_;
    const bool is_part_;
    bool is_kept_ = false;
};

}  // namespace host
