// write: says "ready", waits until the file GO exists, and appends RECORDS numbered records in each
// of THREADS threads, the writers FIRST, FIRST + 1, ... of a log file of LIMIT bytes. Prints how
// long the longest Log call took, in milliseconds.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>
#include <vector>

#include "log_file/log_recorder.h"
#include "numbered_records.h"
#include "verbs.h"

namespace stress {

namespace {

using Clock = std::chrono::steady_clock;

std::uint32_t Number(const std::string& text) {
    return static_cast<std::uint32_t>(std::stoul(text));
}

// Returns the longest call's time.
Clock::duration Append(std::uint32_t writer, std::uint32_t records) {
    Clock::duration longest{};
    for (std::uint32_t number = 1; number <= records; ++number) {
        const Clock::time_point began = Clock::now();
        LogNumber({writer, number});
        longest = std::max(longest, Clock::now() - began);
    }
    return longest;
}

}  // namespace

int Write(const TArguments& arguments) {
    Mox::TLogger& logger = *Mox::GetLogger();
    logger.Init();
    Mox::TLogRecorder recorder;
    if (!recorder.Open(arguments[0].c_str(), Number(arguments[1]))) return 1;
    Mox::TLogRecorder* before = logger.recorder;
    Mox::SetLogRecorder(&recorder);
    std::puts("ready");
    std::fflush(stdout);
    while (!std::filesystem::exists(arguments[5]))
        std::this_thread::sleep_for(std::chrono::milliseconds(5));

    std::vector<Clock::duration> longest(Number(arguments[3]));
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < longest.size(); ++t) {
        threads.emplace_back(
            [&, t] { longest[t] = Append(Number(arguments[2]) + t, Number(arguments[4])); });
    }
    for (std::thread& thread : threads) thread.join();
    const std::chrono::duration<double, std::milli> most =
        *std::max_element(longest.begin(), longest.end());
    std::printf("longest %.1f\n", most.count());

    Mox::ClearLogRecorder(&recorder);
    if (before != nullptr) Mox::SetLogRecorder(before);
    logger.Release();
    return 0;
}

}  // namespace stress
