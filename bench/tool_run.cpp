#include "tool_run.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace bench {

std::string Folder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::string ToolNow() {
    return Folder() + "/../bin/qv";
}

std::string ToolBefore() {
    const char* const name = std::getenv("QV_BENCH_BEFORE");
    return name == nullptr ? "" : name;
}

Tool::Tool(std::string program, const std::string& root, const std::string& machine)
    : program_(std::move(program)), root_("QV_HOST_ROOT=" + root) {
    std::filesystem::create_directories(root);
    if (!machine.empty()) Seconds({"host", "import", machine});
}

double Tool::Seconds(const Words& words) const {
    std::vector<char*> argv{const_cast<char*>(program_.c_str())};
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    char* const environment[] = {const_cast<char*>(root_.c_str()), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int error =
        posix_spawn(&child, program_.c_str(), &actions, nullptr, argv.data(), environment);
    posix_spawn_file_actions_destroy(&actions);
    int status = 1;
    rusage used{};
    if (error != 0 || wait4(child, &status, 0, &used) != child || status != 0) return -1;
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

void AddToolCase(const std::string& name, const Tool& (*tool)(), Words (*words)()) {
    const auto run = [tool, words](benchmark::State& state) {
        for (auto _ : state) {
            const double seconds = tool().Seconds(words());
            if (seconds < 0) state.SkipWithError("the program failed");
            state.SetIterationTime(seconds);
        }
    };
    benchmark::RegisterBenchmark(name.c_str(), run)->UseManualTime();
}

}  // namespace bench
