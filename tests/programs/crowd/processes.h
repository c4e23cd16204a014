// Processes of a stress run, and the memory that they share: it stays when one of them dies.
#pragma once

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <string>
#include <thread>

namespace stress {

[[noreturn]] inline void Fail(const std::string& text) {
    std::fprintf(stderr, "%s\n", text.c_str());
    std::_Exit(1);
}

// Microseconds.
inline std::uint64_t Now() {
    using namespace std::chrono;
    return static_cast<std::uint64_t>(
        duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count());
}
inline void SleepFor(std::uint64_t microseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
}

template <class Condition>
void WaitUntil(const Condition& condition, const char* what, std::uint64_t pause = 100) {
    constexpr std::uint64_t kPatience = 120'000'000;
    const std::uint64_t began = Now();
    while (!condition()) {
        if (Now() - began > kPatience) Fail(std::string("waited in vain for a process ") + what);
        if (pause > 0) SleepFor(pause);
    }
}

// Anonymous memory, shared with the processes that are forked later; never given back.
template <class T>
T* NewShared(std::size_t count = 1) {
    void* at =
        mmap(nullptr, count * sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (at == MAP_FAILED) Fail("no shared memory");
    return new (at) T[count];
}

// The calling process must have one thread only. The new one ends with its maker.
inline pid_t Start(const std::function<void()>& work) {
    const pid_t child = fork();
    if (child < 0) Fail("no process");
    if (child != 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    work();
    std::_Exit(0);
}

inline bool EndsWell(pid_t child) {
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}

inline void Kill(pid_t child) {
    kill(child, SIGKILL);
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFSIGNALED(status)) {
        Fail("a process ended before it was killed");
    }
}

// None of the processes that were started has ended.
inline bool AllLive() {
    return waitpid(-1, nullptr, WNOHANG) == 0;
}

}  // namespace stress
