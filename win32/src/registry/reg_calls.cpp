#include "registry/reg_calls.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <new>
#include <thread>
#include <utility>
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

// What waited for the end of the group of changes. Guarded by the store's mutex; never destroyed.
std::vector<std::function<void()>>& Waiting() {
    static auto& waiting = *new std::vector<std::function<void()>>;
    return waiting;
}

// The end of a call that fails. A group of changes cannot go on without the lock that it waited
// for, or after the database took it back. With the mutex held.
LSTATUS Note(RegStore& store, RegError error) {
    if (error.code == ERROR_BUSY && !store.InLostGroup()) {
        const std::string holder = store.LockHolder();
        error.text = store.Path() + ": locked by " + (holder.empty() ? "another process" : holder);
    }
    if (error.code == ERROR_BUSY || error.code == ERROR_DISK_FULL) store.LoseGroup(error);
    if (error.code == ERROR_DISK_FULL) store.FreeSpace();
    store.Problem() = error.text;
    return error.code;
}

// Between two tries the mutex is free, so that the other threads go on. What a change that found
// the disk full had begun to write is given back once; perhaps it fits then.
LSTATUS OnStore(RegStore::Use use, const CallRef<LSTATUS(RegStore&)>& run) {
    RegStore& store = RegStore::Get();
    const Clock::time_point end = Clock::now() + kLongestWait;
    bool freed = false;
    for (microseconds pause = kFirstPause;; pause = std::min(pause * 2, kLongestPause)) {
        std::unique_lock lock(store.Mutex());
        try {
            if (store.Refresh(use, [] { TakeOverTextFiles(); })) SetTextFilesAside();
            const LSTATUS code = run(store);
            store.Problem().clear();
            return code;
        } catch (const RegError& error) {
            const bool is_alone = !store.InLostGroup();
            if (is_alone && error.code == ERROR_DISK_FULL && !freed) {
                store.FreeSpace();
                freed = true;
            } else if (!is_alone || error.code != ERROR_BUSY || Clock::now() >= end) {
                return Note(store, error);
            }
        } catch (const std::bad_alloc&) {
            return ERROR_NOT_ENOUGH_MEMORY;
        } catch (const RegStale&) {
            continue;
        } catch (const std::exception& error) {
            return Note(store, {ERROR_GEN_FAILURE, error.what()});
        }
        lock.unlock();
        std::this_thread::sleep_for(pause);
    }
}

// The mutex is given up before the pin, whose end may destroy the handle's object.
LSTATUS OnKey(HKEY handle, REGSAM needed, RegStore::Use use,
              const CallRef<LSTATUS(RegStore&, const KeyContext&)>& run) {
    const auto on = [&](const KeyContext& key) {
        return OnStore(use, [&](RegStore& store) { return run(store, key); });
    };
    const std::int64_t root = FindRoot(handle);
    if (root != 0) return on({RegKey(root), 0});
    const HandlePin<OpenKey> open(reinterpret_cast<HANDLE>(handle));
    if (!open) return ERROR_INVALID_HANDLE;
    if ((open->Access() & needed) != needed) return ERROR_ACCESS_DENIED;
    return on({RegKey(open->Id()), open->Depth()});
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
    return OnKey(handle, needed, RegStore::Use::kRead, [&](RegStore& store, const KeyContext& on) {
        const RegSnapshot snapshot(store, on.key.Id());
        return read(on);
    });
}

LSTATUS ChangeKey(HKEY handle, REGSAM needed, const KeyUser& change) {
    return OnKey(handle, needed, RegStore::Use::kWrite, [&](RegStore& store, const KeyContext& on) {
        return InChange(store, [&] {
            if (!on.key.Exists()) throw RegError{ERROR_KEY_DELETED, {}};
            return change(on);
        });
    });
}

LSTATUS ReadRegistry(const CallRef<void()>& read) {
    return OnStore(RegStore::Use::kRead, [&](RegStore& store) -> LSTATUS {
        const RegSnapshot snapshot(store, 1);
        store.ForQuery();  // holds the snapshot: the function runs once
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
    std::vector<std::function<void()>> waiting;  // ends behind the lock
    RegStore& store = RegStore::Get();
    std::unique_lock lock(store.Mutex());
    waiting.swap(Waiting());
    try {
        store.EndChanges(keep);
    } catch (const RegError& error) {
        return Note(store, error);
    }
    lock.unlock();
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
    return RegStore::Get().Problem();
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
