// The tool as a person starts it: a program a time, in processor time from its start to its end.
//
// QV_BENCH_BEFORE may name the tool of an earlier version, which then runs in turn with this one.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "log_file/log_format.h"
#include "log_file/log_image.h"
#include "log_file/log_record.h"
#include "support.h"

namespace {

constexpr std::size_t kFull = 0x500000;  // what start-up passes

std::string Folder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

// A program, and a machine of its own from samples/ in the state that this version keeps.
class Tool {
  public:
    Tool(std::string program, const std::string& root)
        : program_(std::move(program)), root_("QV_HOST_ROOT=" + root) {
        std::filesystem::create_directories(root);
        if (program_.ends_with("/qv")) Seconds({"host", "import", QV_SAMPLES "/machine.reg"});
    }

    // Processor time of one run, negative when it failed.
    double Seconds(const std::vector<std::string>& words) const {
        std::vector<char*> argv{const_cast<char*>(program_.c_str())};
        for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
        argv.push_back(nullptr);
        char* const environment[] = {const_cast<char*>(root_.c_str()), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
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

  private:
    std::string program_;
    std::string root_;
};

const Tool& Ours() {
    static const Tool tool(Folder() + "/../bin/qv", bench::HostRoot() + "/tool");
    return tool;
}

const Tool& Before() {
    static const Tool tool(std::getenv("QV_BENCH_BEFORE"), bench::HostRoot() + "/tool_before");
    return tool;
}

// A program that only says one line.
const Tool& SmallProgram() {
    static const Tool tool(Folder() + "/small_program", bench::HostRoot());
    return tool;
}

// A record as the product's own modules write them; one of twenty tells a failure. The lines of a
// command come together, the commands seconds apart.
void Fill(Mox::TLogMsg& message, int number) {
    constexpr std::uint64_t kSecond = 10'000'000;
    const bool fails = number % 20 == 0;
    const std::string printer = "'Printer " + std::to_string(number) + "'";
    const std::uint64_t time =
        134'000'000'000'000'000 + number / 5 * 3 * kSecond + number % 5 * 9000;
    message.time = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    message.level = fails ? 'X' : 'i';
    message.processId = message.threadId = static_cast<DWORD>(4000 + number / 50);
    message.sessionId = 1;
    message.source = TEXT("printer_query");
    message.line = fails ? 57 : 118;
    message.text =
        bench::Wide(fails ? "[GetGlobalDevMode(" + printer +
                                ")] OpenPrinter failed: [1801]The printer name is invalid."
                          : "SetPrinter(" + printer + ") called successfully, level 9");
}

const std::string& FullLog() {
    static const std::string name = [] {
        Mox::TLogImage image;
        Mox::TLogMsg message;
        std::size_t size = 0;
        for (int i = 0; size < kFull; ++i) {
            Fill(message, i);
            size += Mox::WriteLogMsg(nullptr, &message) + Mox::kLinkSize;
            image.Append(message);
        }
        std::string file = bench::NewFileName();
        const std::vector<std::uint8_t>& bytes = image.Finish(kFull);
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return file;
    }();
    return name;
}

using Words = std::vector<std::string>;

Words Version() {
    return {"--version"};
}
Words Get() {
    return {"get", "Vantrel Fax"};
}
Words Show() {
    return {"log", "show", FullLog()};
}
Words Grep() {
    return {"log", "show", FullLog(), "--grep", "rinter .*(failed|refused): \\[[0-9]+\\]"};
}

void Add(const std::string& name, const Tool& (*tool)(), Words (*words)()) {
    const auto run = [tool, words](benchmark::State& state) {
        for (auto _ : state) {
            const double seconds = tool().Seconds(words());
            if (seconds < 0) state.SkipWithError("the program failed");
            state.SetIterationTime(seconds);
        }
    };
    benchmark::RegisterBenchmark(("tool/" + name).c_str(), run)->UseManualTime();
}

const bool kAdded = [] {
    const bool has_before = std::getenv("QV_BENCH_BEFORE") != nullptr;
    const auto add = [has_before](const std::string& row, Words (*words)()) {
        Add(row + "/ours", Ours, words);
        if (has_before) Add(row + "/before", Before, words);
    };
    add("version", Version);
    Add("version/small_program", SmallProgram, Version);
    add("get", Get);
    Add("get/version", Ours, Version);
    add("show", Show);
    add("grep", Grep);
    Add("grep/show", Ours, Show);
    return true;
}();

}  // namespace
