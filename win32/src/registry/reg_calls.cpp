#include "registry/reg_calls.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <new>
#include <optional>
#include <thread>
#include <vector>

#include "registry/reg_takeover.h"

namespace host {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr auto kLongestWait = std::chrono::seconds(5);
constexpr microseconds kFirstPause{50};
constexpr microseconds kLongestPause{20000};
constexpr REGSAM kMaximumAllowed = 0x02000000;
constexpr REGSAM kChangeRights = KEY_SET_VALUE | KEY_CREATE_SUB_KEY;

// A predefined root or a pinned handle.
class Target {
  public:
    explicit Target(HKEY handle) : root_(FindRoot(handle)) {
        if (root_ == 0) pin_.emplace(reinterpret_cast<HANDLE>(handle));
    }
    explicit operator bool() const { return root_ != 0 || *pin_; }
    bool Allows(REGSAM needed) const {
        return root_ != 0 || ((*pin_)->Access() & needed) == needed;
    }
    std::int64_t Id() const { return root_ != 0 ? root_ : (*pin_)->Id(); }
    KeyContext Context() const { return {RegKey(Id()), root_ != 0 ? 0 : (*pin_)->Depth()}; }

  private:
    const std::int64_t root_;
    std::optional<HandlePin<OpenKey>> pin_;
};

// Guarded by the store's mutex; never destroyed.
std::string& Problem() {
    static std::string& problem = *new std::string;
    return problem;
}

// What waited for the end of the group of changes. Guarded by the store's mutex; never destroyed.
std::vector<std::function<void()>>& Waiting() {
    static auto& waiting = *new std::vector<std::function<void()>>;
    return waiting;
}

// The end of a call that fails. A group of changes cannot go on without the lock that it waited
// for, or after the database took it back.
LSTATUS Note(RegError error) {
    RegStore& store = RegStore::Get();
    const std::scoped_lock lock(store.Mutex());
    if (error.code == ERROR_BUSY && !store.InLostGroup()) {
        const std::string holder = store.LockHolder();
        error.text = store.Path() + ": locked by " + (holder.empty() ? "another process" : holder);
    }
    if (error.code == ERROR_BUSY || error.code == ERROR_DISK_FULL) store.LoseGroup(error);
    if (error.code == ERROR_DISK_FULL) store.FreeSpace();
    Problem() = error.text;
    return error.code;
}

// What a change that found the disk full had begun to write is given back; perhaps it fits then.
void FreeSpace(RegStore& store) {
    const std::scoped_lock lock(store.Mutex());
    store.FreeSpace();
}

// Between two tries the mutex is free, so that the other threads go on.
LSTATUS OnStore(RegStore::Use use, const CallRef<LSTATUS(RegStore&)>& run) {
    RegStore& store = RegStore::Get();
    const Clock::time_point end = Clock::now() + kLongestWait;
    bool freed = false;
    for (microseconds pause = kFirstPause;; pause = std::min(pause * 2, kLongestPause)) {
        try {
            const std::scoped_lock lock(store.Mutex());
            if (store.Refresh(use, [] { TakeOverTextFiles(); })) SetTextFilesAside();
            const LSTATUS code = run(store);
            Problem().clear();
            return code;
        } catch (const RegError& error) {
            const bool is_alone = !store.InLostGroup();
            const bool is_full = is_alone && error.code == ERROR_DISK_FULL && !freed;
            const bool is_busy = is_alone && error.code == ERROR_BUSY && Clock::now() < end;
            if (is_full) FreeSpace(store);
            freed |= is_full;
            if (!is_full && !is_busy) return Note(error);
        } catch (const std::bad_alloc&) {
            return ERROR_NOT_ENOUGH_MEMORY;
        } catch (const RegStale&) {
            continue;
        } catch (const std::exception&) {
            return ERROR_GEN_FAILURE;
        }
        std::this_thread::sleep_for(pause);
    }
}

// The mutex is given up before the pin, whose end may destroy the handle's object.
LSTATUS OnKey(HKEY handle, REGSAM needed, RegStore::Use use,
              const CallRef<LSTATUS(RegStore&, const Target&)>& run) {
    const Target target(handle);
    if (!target) return ERROR_INVALID_HANDLE;
    if (!target.Allows(needed)) return ERROR_ACCESS_DENIED;
    return OnStore(use, [&](RegStore& store) { return run(store, target); });
}

REGSAM MapGenericRights(REGSAM access, bool may_write) {
    REGSAM rights = access & KEY_ALL_ACCESS;
    if ((access & GENERIC_READ) != 0) rights |= KEY_READ;
    if ((access & GENERIC_WRITE) != 0) rights |= KEY_WRITE;
    if ((access & GENERIC_EXECUTE) != 0) rights |= KEY_READ;
    if ((access & GENERIC_ALL) != 0) rights |= KEY_ALL_ACCESS;
    if ((access & kMaximumAllowed) != 0) rights |= may_write ? KEY_ALL_ACCESS : KEY_READ;
    return rights;
}

LSTATUS InChange(RegStore& store, const CallRef<LSTATUS()>& run) {
    RegChange change(store);
    const LSTATUS code = run();
    if (code == ERROR_SUCCESS) change.Keep();
    return code;
}

}  // namespace

LSTATUS ReadKey(HKEY handle, REGSAM needed, const KeyUser& read) {
    return OnKey(handle, needed, RegStore::Use::kRead, [&](RegStore& store, const Target& target) {
        const RegSnapshot snapshot(store, target.Id(), RegSnapshot::Asks::kLate);
        return read(target.Context());
    });
}

LSTATUS ChangeKey(HKEY handle, REGSAM needed, const KeyUser& change) {
    return OnKey(handle, needed, RegStore::Use::kWrite, [&](RegStore& store, const Target& target) {
        return InChange(store, [&] {
            if (!RegKey(target.Id()).Exists()) throw RegError{ERROR_KEY_DELETED, {}};
            return change(target.Context());
        });
    });
}

LSTATUS ReadRegistry(const CallRef<void()>& read) {
    return OnStore(RegStore::Use::kRead, [&](RegStore& store) -> LSTATUS {
        const RegSnapshot snapshot(store, 1, RegSnapshot::Asks::kAtOnce);
        read();
        return ERROR_SUCCESS;
    });
}

LSTATUS ChangeRegistry(const CallRef<void()>& change) {
    return OnStore(RegStore::Use::kWrite, [&](RegStore& store) {
        const LSTATUS code = InChange(store, [&]() -> LSTATUS {
            change();
            return ERROR_SUCCESS;
        });
        store.KeepLogShort();
        return code;
    });
}

LSTATUS EndGroup(bool keep) {
    std::vector<std::function<void()>> waiting;
    try {
        const std::scoped_lock lock(RegStore::Get().Mutex());
        waiting.swap(Waiting());
        RegStore::Get().EndChanges(keep);
    } catch (const RegError& error) {
        return Note(error);
    }
    if (keep) std::ranges::for_each(waiting, [](const auto& run) { run(); });
    return ERROR_SUCCESS;
}

bool RunAfterGroup(std::function<void()> run) {
    const std::scoped_lock lock(RegStore::Get().Mutex());
    const bool waits = RegStore::Get().InGroup();
    if (waits) Waiting().push_back(std::move(run));
    return waits;
}

std::string RegistryProblem() {
    const std::scoped_lock lock(RegStore::Get().Mutex());
    return Problem();
}

LSTATUS OpenKeyHandle(std::int64_t id, std::size_t depth, REGSAM access, PHKEY result) {
    RegStore& store = RegStore::Get();
    std::unique_lock lock(store.Mutex());
    const bool may_write = store.MayWrite();
    lock.unlock();
    const REGSAM rights = MapGenericRights(access, may_write);
    if ((rights & kChangeRights) != 0 && !may_write) return ERROR_ACCESS_DENIED;
    const HANDLE handle = OpenHandle(std::make_unique<OpenKey>(id, depth, rights));
    if (handle == nullptr) return ERROR_TOO_MANY_OPEN_FILES;
    *result = reinterpret_cast<HKEY>(handle);
    return ERROR_SUCCESS;
}

}  // namespace host
