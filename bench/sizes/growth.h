// For programs that check that work takes time in proportion to its size. They compare the
// processor time of a quarter of the work with the time of the whole, and count failures.
#pragma once

#include <time.h>

#include <cstdio>

namespace stress {

constexpr double kMostGrowth = 9;
// A shorter time (seconds) is not compared: it is not precise enough.
constexpr double kLeastSeconds = 0.02;

inline int failures = 0;

inline double Seconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

inline void Expect(bool holds, const char* what) {
    if (holds) return;
    std::printf("FAILED: %s\n", what);
    ++failures;
}

// `run(size)` does the work of that size and returns the seconds, without those of its preparation.
template <class Run>
void Compare(const char* what, int size, const Run& run) {
    const double quarter = run(size / 4);
    const double whole = run(size);
    const double growth = whole / quarter;
    std::printf("%-34s %8.3f s %8.3f s  x %.1f\n", what, quarter, whole, growth);
    std::fflush(stdout);
    if (whole > kLeastSeconds && growth > kMostGrowth) {
        std::printf("FAILED: %s is not linear\n", what);
        ++failures;
    }
}

}  // namespace stress
