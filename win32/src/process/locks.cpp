// Critical sections and slim locks. A fork takes them over: see base/fork_lock.h.
#include <windows.h>

#include <pthread.h>

#include <atomic>
#include <new>

#include "base/fork_lock.h"

namespace {

// Counts how often its owner has entered it.
struct Section {
    host::ForkLock lock;
    std::atomic<pthread_t> owner{};  // 0 when nobody is inside
    DWORD count = 0;                 // the owner's
};

Section& SectionOf(LPCRITICAL_SECTION section) {
    static_assert(sizeof(Section) <= sizeof section->opaque &&
                  alignof(Section) <= alignof(CRITICAL_SECTION));
    return *reinterpret_cast<Section*>(section->opaque);
}

host::ForkLock& LockOf(PSRWLOCK lock) {
    static_assert(sizeof(host::ForkLock) == sizeof(SRWLOCK) &&
                  alignof(host::ForkLock) <= alignof(SRWLOCK));
    return *reinterpret_cast<host::ForkLock*>(lock);
}

}  // namespace

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    Section& made = *::new (section->opaque) Section;
    made.lock.MakeKnown(&made.owner);
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    host::ForgetLock(SectionOf(section).lock);
}

void EnterCriticalSection(LPCRITICAL_SECTION section) {
    Section& entered = SectionOf(section);
    if (entered.owner.load(std::memory_order_relaxed) == pthread_self()) {
        ++entered.count;
        return;
    }
    entered.lock.lock();
    entered.owner.store(pthread_self(), std::memory_order_relaxed);
    entered.count = 1;
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) {
    Section& left = SectionOf(section);
    if (left.owner.load(std::memory_order_relaxed) != pthread_self() || --left.count > 0) return;
    left.owner.store(pthread_t{}, std::memory_order_relaxed);
    left.lock.unlock();
}

void AcquireSRWLockExclusive(PSRWLOCK lock) {
    LockOf(lock).lock();
}

void ReleaseSRWLockExclusive(PSRWLOCK lock) {
    LockOf(lock).unlock();
}
