// A lock between the threads of this process that a fork takes over.
//
// The child of a fork has one thread. A lock that another thread of the parent held would stay
// taken there for ever, and what it guards would be half changed. So the thread that forks takes
// all locks of this kind first, and both processes let go of them afterwards. A lock is known from
// its first use on. It may be taken while others are held: fork takes them in no order, and starts
// again when one of them keeps it waiting.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace host {

// For std::lock_guard. Has no destructor, so that it works until the process ends. Memory that is
// unmapped or used again is noticed; a lock in memory that goes back to a heap is forgotten with
// ForgetLock.
class ForkLock {
  public:
    constexpr ForkLock() = default;
    ForkLock(const ForkLock&) = delete;
    ForkLock& operator=(const ForkLock&) = delete;

    void lock() {
        if (!try_lock()) Wait();
    }
    bool try_lock() {
        if (known_.load(std::memory_order_acquire) != kKnown) MakeKnown(nullptr);
        std::uint32_t free = kFree;
        return state_.compare_exchange_strong(free, kTaken, std::memory_order_acquire);
    }
    void unlock() {
        if (state_.exchange(kFree, std::memory_order_release) == kAwaited) state_.notify_one();
    }

    // The thread in `owner` holds the lock. When it forks, the lock stays taken in both processes.
    void MakeKnown(std::atomic<pthread_t>* owner);
    // Whether it still is a lock that MakeKnown has seen, and not other bytes or no memory at all.
    bool IsThere() const;
    // In the child, when its holder is gone.
    void Reset() { state_.store(kFree, std::memory_order_relaxed); }

  private:
    enum : std::uint32_t { kFree, kTaken, kAwaited };
    static constexpr std::uint32_t kKnown = 0x4B4C4B46;

    void Wait();

    std::atomic<std::uint32_t> state_{kFree};
    std::atomic<std::uint32_t> known_{0};  // the second word, which IsThere reads
};
static_assert(sizeof(ForkLock) == 8);

void ForgetLock(ForkLock& lock);

// For the handlers of fork. TakeAllLocks waits at most a second; what it did not get by then stays
// its holder's in the parent and is free in the child.
void TakeAllLocks();
void ReleaseAllLocks();
void ReleaseAllLocksInChild();

}  // namespace host
