// log_load FILE LIMIT FIRST THREADS RECORDS GO: says "ready", waits until the file GO exists, and
// appends RECORDS numbered records in each of THREADS threads, the writers FIRST, FIRST + 1, ... of
// a log file of LIMIT bytes. Prints how long the longest Log call took, in milliseconds.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

#include "log_file/log_recorder.h"
#include "numbered_records.h"

namespace {

using Clock = std::chrono::steady_clock;

// Returns the longest call's time.
Clock::duration Append(std::uint32_t writer, std::uint32_t records) {
    Clock::duration longest{};
    for (std::uint32_t number = 1; number <= records; ++number) {
        const Clock::time_point began = Clock::now();
        stress::LogNumber({writer, number});
        longest = std::max(longest, Clock::now() - began);
    }
    return longest;
}

void AppendInThreads(std::uint32_t first, std::uint32_t thread_count, std::uint32_t records) {
    std::vector<Clock::duration> longest(thread_count);
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < thread_count; ++t) {
        threads.emplace_back([&, t] { longest[t] = Append(first + t, records); });
    }
    for (std::thread& thread : threads) thread.join();
    const std::chrono::duration<double, std::milli> most =
        *std::max_element(longest.begin(), longest.end());
    std::printf("longest %.1f\n", most.count());
}

std::uint32_t Number(const char* text) {
    return static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 7 || Number(argv[4]) == 0) {
        std::fputs("usage: log_load FILE LIMIT FIRST THREADS RECORDS GO\n", stderr);
        return 2;
    }
    Mox::TLogger& logger = *Mox::GetLogger();
    logger.Init();
    Mox::TLogRecorder recorder;
    if (!recorder.Open(argv[1], Number(argv[2]))) return 1;
    Mox::TLogRecorder* before = logger.recorder;
    Mox::SetLogRecorder(&recorder);
    std::puts("ready");
    std::fflush(stdout);
    while (!std::filesystem::exists(argv[6])) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    AppendInThreads(Number(argv[3]), Number(argv[4]), Number(argv[5]));
    Mox::ClearLogRecorder(&recorder);
    if (before != nullptr) Mox::SetLogRecorder(before);
    logger.Release();
    return 0;
}
