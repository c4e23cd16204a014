// A lock between the threads of this process that works across a fork.
//
// The child of a fork has one thread. A lock that another thread of the parent held would stay
// taken in the child for ever, and its data would be half changed. So the thread that forks first
// takes all locks of this kind; both processes release them afterwards. Fork knows a lock from its
// first use on. A thread may take a lock while it holds others: fork takes them in no order, and
// starts again when it has to wait for one.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace host {

// For std::lock_guard. Has no destructor, so it works until the process ends. Fork notices memory
// that was unmapped or is in other use. Call ForgetLock before the memory of a lock goes back to a
// heap.
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

    // Tells fork of this lock. The thread in `owner` holds the lock; when that thread forks, the
    // lock stays taken in both processes.
    void MakeKnown(std::atomic<pthread_t>* owner);
    // Whether the memory still holds a lock that MakeKnown has seen.
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

// For the handlers of fork. TakeAllLocks waits at most a second. A lock that it did not get stays
// with its holder in the parent, and is free in the child.
void TakeAllLocks();
void ReleaseAllLocks();
void ReleaseAllLocksInChild();

}  // namespace host
