// Thread-local slots, critical sections, ids.
#include <windows.h>

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <fstream>
#include <new>
#include <string>

namespace {

constexpr DWORD kSlots = 1088;

// A generation for each slot, odd while the slot is in use. A thread's value counts only when it
// was stored under the same generation. So freeing a slot clears it in all threads at once.
constinit std::array<std::atomic<DWORD>, kSlots> generations{};

struct TlsValue {
    LPVOID value;
    DWORD generation;
};
thread_local std::array<TlsValue, kSlots> values;

BOOL InvalidParameter() {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

pthread_mutex_t* MutexOf(LPCRITICAL_SECTION section) {
    static_assert(sizeof(pthread_mutex_t) <= sizeof section->opaque &&
                  alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION));
    return reinterpret_cast<pthread_mutex_t*>(section->opaque);
}

}  // namespace

DWORD TlsAlloc() {
    for (DWORD slot = 0; slot < kSlots; ++slot) {
        DWORD generation = generations[slot].load(std::memory_order_relaxed);
        if (generation % 2 == 0 &&
            generations[slot].compare_exchange_strong(generation, generation + 1)) {
            return slot;
        }
    }
    SetLastError(ERROR_NO_MORE_ITEMS);
    return TLS_OUT_OF_INDEXES;
}

BOOL TlsFree(DWORD slot) {
    if (slot >= kSlots) return InvalidParameter();
    DWORD generation = generations[slot].load();
    if (generation % 2 == 0) return InvalidParameter();
    return generations[slot].compare_exchange_strong(generation, generation + 1)
               ? TRUE
               : InvalidParameter();
}

LPVOID TlsGetValue(DWORD slot) {
    if (slot >= kSlots) {
        InvalidParameter();
        return nullptr;
    }
    SetLastError(NO_ERROR);
    const TlsValue& entry = values[slot];
    return entry.generation == generations[slot].load(std::memory_order_acquire) ? entry.value
                                                                                 : nullptr;
}

BOOL TlsSetValue(DWORD slot, LPVOID value) {
    if (slot >= kSlots) return InvalidParameter();
    const DWORD generation = generations[slot].load(std::memory_order_acquire);
    if (generation % 2 == 0) return InvalidParameter();
    values[slot] = {value, generation};
    return TRUE;
}

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(::new (section->opaque) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutex_destroy(MutexOf(section));
}

void EnterCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutex_lock(MutexOf(section));
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutex_unlock(MutexOf(section));
}

DWORD GetCurrentThreadId() {
    // Asks the kernel once for each thread. The thread that remains after a fork is a new one.
    static thread_local DWORD id = 0;
    if (id == 0) {
        static const bool forgets = pthread_atfork(nullptr, nullptr, [] { id = 0; }) == 0;
        if (!forgets) return static_cast<DWORD>(gettid());
        id = static_cast<DWORD>(gettid());
    }
    return id;
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

HANDLE GetCurrentProcess() {
    return INVALID_HANDLE_VALUE;
}

HANDLE GetCurrentThread() {
    return reinterpret_cast<HANDLE>(LONG_PTR{-2});
}

BOOL ProcessIdToSessionId(DWORD process, LPDWORD session) {
    const std::string folder = "/proc/" + std::to_string(process);
    struct stat status {};
    if (session == nullptr || stat(folder.c_str(), &status) != 0) return InvalidParameter();
    // The kernel's login session. Its highest number means "none", and a kernel without audit has
    // no such file. Both count as the one interactive session.
    constexpr DWORD kNone = 0xFFFFFFFF;
    DWORD login = kNone;
    std::ifstream(folder + "/sessionid") >> login;
    *session = login == kNone ? 1 : login;
    return TRUE;
}
