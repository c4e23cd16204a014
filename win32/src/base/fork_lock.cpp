#include "base/fork_lock.h"

#include <sched.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <new>

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

struct Known {
    std::atomic<pthread_t>* owner = nullptr;  // null for a lock without one
    bool taken = false;                       // by TakeAllLocks
};

struct KnownLocks {
    std::mutex mutex;  // held from TakeAllLocks until the locks are released
    std::map<ForkLock*, Known> locks;
};

// Never destroyed: locks are used until the process ends.
KnownLocks& All() {
    static KnownLocks& all = *std::make_unique<KnownLocks>().release();
    return all;
}

bool IsThere(const ForkLock* lock) {
    static const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    void* const start =
        reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(lock) & ~(page - 1));
    unsigned char unused = 0;
    return mincore(start, 1, &unused) == 0 && lock->IsKnown();
}

bool IsOwn(const Known& known) {
    return known.owner != nullptr && known.owner->load() == pthread_self();
}

// A busy lock is free for short moments only: many tries in a row look for one.
bool TakeSoon(ForkLock& lock) {
    constexpr int kTriesInARow = 100;
    for (int i = 0; i < kTriesInARow; ++i) {
        if (lock.try_lock()) return true;
        sched_yield();
    }
    return false;
}

// Takes all locks that can be had; false when one is missing.
bool Take(KnownLocks& all) {
    bool complete = true;
    for (auto& [lock, known] : all.locks) {
        if (IsOwn(known)) continue;
        known.taken = TakeSoon(*lock);
        complete = complete && known.taken;
    }
    return complete;
}

void Release(KnownLocks& all) {
    for (auto& [lock, known] : all.locks) {
        if (known.taken) lock->unlock();
        known.taken = false;
    }
}

}  // namespace

void ForkLock::MakeKnown(std::atomic<pthread_t>* owner) {
    KnownLocks& all = All();
    const std::scoped_lock lock(all.mutex);
    try {
        all.locks[this] = {owner, false};
    } catch (const std::bad_alloc&) {
        return;  // the next use tries again
    }
    known_.store(kKnown, std::memory_order_release);
}

void ForkLock::Wait() {
    while (state_.exchange(kAwaited, std::memory_order_acquire) != kFree) state_.wait(kAwaited);
}

void ForgetLock(ForkLock& lock) {
    KnownLocks& all = All();
    const std::scoped_lock hold(all.mutex);
    all.locks.erase(&lock);
}

// Between two rounds nothing is held: the holder of a missing lock may need another one, or use one
// for the first time.
void TakeAllLocks() {
    constexpr timespec kPause = {0, 20'000};
    const auto deadline = Clock::now() + std::chrono::seconds(1);
    KnownLocks& all = All();
    for (;; nanosleep(&kPause, nullptr)) {
        all.mutex.lock();
        std::erase_if(all.locks, [](const auto& entry) { return !IsThere(entry.first); });
        if (Take(all) || Clock::now() >= deadline) return;
        Release(all);
        all.mutex.unlock();
    }
}

void ReleaseAllLocks() {
    KnownLocks& all = All();
    Release(all);
    all.mutex.unlock();
}

void ReleaseAllLocksInChild() {
    KnownLocks& all = All();
    for (auto& [lock, known] : all.locks) {
        if (known.taken || IsOwn(known)) continue;
        if (known.owner != nullptr) known.owner->store(pthread_t{});
        lock->Reset();
    }
    ReleaseAllLocks();
}

}  // namespace host
