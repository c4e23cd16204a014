// A lock between the threads of a process.
#pragma once

#include <windows.h>

namespace System {

// For std::lock_guard; not recursive. It stands in place of std::mutex because the platform knows
// it: on a system where processes fork, the child does not find it taken by a thread that it does
// not have. Has no destructor, so that it works until the process ends.
class TLock {
  public:
    constexpr TLock() = default;
    TLock(const TLock&) = delete;
    TLock& operator=(const TLock&) = delete;

    void lock() { AcquireSRWLockExclusive(&lock_); }
    void unlock() { ReleaseSRWLockExclusive(&lock_); }

  private:
    SRWLOCK lock_ = SRWLOCK_INIT;
};

}  // namespace System
