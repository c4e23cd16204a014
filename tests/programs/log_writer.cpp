// log_writer FILE COUNT TAG [THREADS GO]: appends the texts "TAG:0", "TAG:1", ... to a log file, as
// a process of the product would. With THREADS it says "ready", waits until the file GO exists, and
// then each thread T appends COUNT texts "TAGT:0", "TAGT:1", ...
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

#include "log_file/log_recorder.h"
#include "mox_classes/text/sysutils_numbers.h"

namespace {

void Append(const UnicodeString& tag, int count) {
    for (int i = 0; i < count; ++i) {
        Mox::GetLogger()->Log('i', TEXT("log_writer"), __LINE__,
                              Sysutils::UnicodePrintf(TEXT("%s:%d"), tag, i), UnicodeString(),
                              nullptr, 0);
    }
}

void AppendInThreads(const UnicodeString& tag, int count, int thread_count, const char* go) {
    std::puts("ready");
    std::fflush(stdout);
    while (!std::filesystem::exists(go)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::vector<std::thread> threads;
    for (int t = 0; t < thread_count; ++t) {
        threads.emplace_back(Append, Sysutils::UnicodePrintf(TEXT("%s%d"), tag, t), count);
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 && argc != 6) {
        std::fputs("usage: log_writer FILE COUNT TAG [THREADS GO]\n", stderr);
        return 2;
    }
    Mox::TLogger& logger = *Mox::GetLogger();
    logger.Init();
    Mox::TLogRecorder recorder;
    const bool open = recorder.Open(argv[1], 0x500000);
    Mox::TLogRecorder* before = logger.recorder;
    Mox::SetLogRecorder(&recorder);
    const int count = open ? std::atoi(argv[2]) : 0;
    if (argc == 4) {
        Append(argv[3], count);
    } else {
        AppendInThreads(argv[3], count, std::atoi(argv[4]), argv[5]);
    }
    Mox::ClearLogRecorder(&recorder);
    if (before != nullptr) Mox::SetLogRecorder(before);
    logger.Release();
    return open ? 0 : 1;
}
