#include "base/fork_lock.h"

#include <sched.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

namespace host {
namespace {

using Clock = std::chrono::steady_clock;

struct Known {
    ForkLock* lock = nullptr;
    std::atomic<pthread_t>* owner = nullptr;  // null for a lock without one
    bool taken = false;                       // by TakeAllLocks
};

struct KnownLocks {
    std::mutex mutex;          // held from TakeAllLocks until the locks are released
    std::vector<Known> locks;  // in the order of their addresses
};

// Never destroyed: locks are used until the process ends.
KnownLocks& All() {
    static KnownLocks& all = *std::make_unique<KnownLocks>().release();
    return all;
}

bool IsOwn(const Known& known) {
    return known.owner != nullptr && known.owner->load() == pthread_self();
}

std::vector<Known>::iterator PlaceOf(KnownLocks& all, const ForkLock* lock) {
    return std::ranges::lower_bound(all.locks, lock, std::less<>(), &Known::lock);
}

void DropUnmapped(KnownLocks& all) {
    std::erase_if(all.locks, [](const Known& known) { return !known.lock->IsThere(); });
}

// Before the list grows, locks of unloaded libraries are removed. So a library that is loaded again
// and again costs no memory.
void Add(KnownLocks& all, const Known& added) {
    if (all.locks.size() == all.locks.capacity()) DropUnmapped(all);
    const auto place = PlaceOf(all, added.lock);
    if (place != all.locks.end() && place->lock == added.lock) {
        *place = added;
    } else {
        all.locks.insert(place, added);
    }
}

// Tries many times in a row, because a busy lock is free only for short moments.
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
    for (Known& known : all.locks) {
        if (IsOwn(known)) continue;
        known.taken = TakeSoon(*known.lock);
        complete = complete && known.taken;
    }
    return complete;
}

void Release(KnownLocks& all) {
    for (Known& known : all.locks) {
        if (known.taken) known.lock->unlock();
        known.taken = false;
    }
}

}  // namespace

void ForkLock::MakeKnown(std::atomic<pthread_t>* owner) {
    KnownLocks& all = All();
    const std::scoped_lock lock(all.mutex);
    try {
        Add(all, {this, owner});
    } catch (const std::bad_alloc&) {
        return;  // the next use tries again
    }
    known_.store(kKnown, std::memory_order_release);
}

// Lets the kernel read the bytes: the memory of an unloaded library may be gone, protected or in
// other use.
bool ForkLock::IsThere() const {
    std::array<std::uint32_t, 2> words{};
    iovec to{words.data(), sizeof words};
    iovec from{const_cast<ForkLock*>(this), sizeof *this};
    if (process_vm_readv(getpid(), &to, 1, &from, 1, 0) < 0) return errno != EFAULT;
    return words[1] == kKnown;
}

void ForkLock::Wait() {
    while (state_.exchange(kAwaited, std::memory_order_acquire) != kFree) state_.wait(kAwaited);
}

void ForgetLock(ForkLock& lock) {
    KnownLocks& all = All();
    const std::scoped_lock hold(all.mutex);
    const auto place = PlaceOf(all, &lock);
    if (place != all.locks.end() && place->lock == &lock) all.locks.erase(place);
}

// Holds no lock between two rounds: the holder of a missing lock may need another lock, or use one
// for the first time.
void TakeAllLocks() {
    constexpr timespec kPause = {0, 20'000};
    const auto deadline = Clock::now() + std::chrono::seconds(1);
    KnownLocks& all = All();
    for (;; nanosleep(&kPause, nullptr)) {
        all.mutex.lock();
        DropUnmapped(all);
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
    for (Known& known : all.locks) {
        if (known.taken || IsOwn(known)) continue;
        if (known.owner != nullptr) known.owner->store(pthread_t{});
        known.lock->Reset();
    }
    ReleaseAllLocks();
}

}  // namespace host
