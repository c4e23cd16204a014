// Thread-local slots, ids.
#include <windows.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <charconv>
#include <string>

#include "base/fork_count.h"
#include "base/unique_fd.h"

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

// An id, asked of the kernel once. A fork gives both ids anew.
struct KnownId {
    DWORD id = 0;
    unsigned process = 0;  // ForkCount when the kernel was asked
};

DWORD AskOnce(KnownId& known, pid_t (*ask)()) {
    if (known.id == 0 || known.process != host::ForkCount()) {
        known = {static_cast<DWORD>(ask()), host::ForkCount()};
    }
    return known.id;
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

DWORD GetCurrentThreadId() {
    static thread_local KnownId known;
    return AskOnce(known, gettid);
}

// Kept for each thread, so that no thread reads what another one writes.
DWORD GetCurrentProcessId() {
    static thread_local KnownId known;
    return AskOnce(known, getpid);
}

HANDLE GetCurrentProcess() {
    return INVALID_HANDLE_VALUE;
}

HANDLE GetCurrentThread() {
    return reinterpret_cast<HANDLE>(LONG_PTR{-2});
}

BOOL ProcessIdToSessionId(DWORD process, LPDWORD session) {
    const std::string folder = "/proc/" + std::to_string(process);
    const host::UniqueFd file(open((folder + "/sessionid").c_str(), O_RDONLY | O_CLOEXEC));
    if (session == nullptr || (!file && access(folder.c_str(), F_OK) != 0)) {
        return InvalidParameter();
    }
    // The kernel's login session. Its highest number means "none", and a kernel without audit has
    // no such file. Both count as the one interactive session.
    constexpr DWORD kNone = 0xFFFFFFFF;
    DWORD login = kNone;
    char digits[16];
    const ssize_t count = read(file.get(), digits, sizeof digits);
    if (count > 0) std::from_chars(digits, digits + count, login);
    *session = login == kNone ? 1 : login;
    return TRUE;
}
