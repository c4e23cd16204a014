// The log file: records through Log with the recorder, beside the bare system calls.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <atomic>
#include <memory>

#include "bare_log.h"
#include "log_file/log_record.h"
#include "log_file/log_recorder.h"
#include "mox_log/logger.h"
#include "support.h"

namespace {

constexpr std::uint32_t kLimit = 0x500000;  // what start-up passes
constexpr int kBeforeFull = 20000;
constexpr int kUntilFull = 40000;
constexpr int kTextLength = 120;

const UnicodeString& Source() {
    static const UnicodeString source = TEXT("log_bench");
    return source;
}

const UnicodeString& Text() {
    static const UnicodeString text = UnicodeString::StringOfChar('x', kTextLength);
    return text;
}

// Size of one record in the file: what the floor writes.
std::uint32_t RecordSize() {
    Mox::TLogMsg message;
    message.source = Source();
    message.text = Text();
    return static_cast<std::uint32_t>(Mox::WriteLogMsg(nullptr, &message));
}

// A logger with a recorder on a file.
class Logging {
  public:
    Logging(const std::string& file_name, std::uint32_t limit) {
        Mox::InitLogger();
        recorder_ = std::make_unique<Mox::TLogRecorder>();
        open_ = recorder_->Open(bench::Wide(file_name), limit);
        Mox::SetLogRecorder(recorder_.get());
    }
    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;
    ~Logging() {
        Mox::ClearLogRecorder(recorder_.get());
        recorder_.reset();
        Mox::UninitLogger();
    }
    bool Append() {
        Mox::GetLogger()->Log('i', Source(), 1, Text(), UnicodeString(), nullptr, 0);
        return open_;
    }

  private:
    std::unique_ptr<Mox::TLogRecorder> recorder_;
    bool open_ = false;
};

template <bench::BareLog::Wait kWait>
class BareCalls {
  public:
    BareCalls(const std::string& file_name, std::uint32_t limit)
        : log_(file_name, limit, RecordSize(), kWait) {}
    bool Append() { return log_.Append(); }

  private:
    bench::BareLog log_;
};
using Bare = BareCalls<bench::BareLog::Wait::InCall>;
using BarePolling = BareCalls<bench::BareLog::Wait::Polling>;

// The ring never wraps: after some records a new file is begun.
template <class Writer>
void RecordEmpty(benchmark::State& state) {
    std::string file = bench::NewFileName();
    auto writer = std::make_unique<Writer>(file, kLimit);
    int written = 0;
    for (auto _ : state) {
        if (written++ == kBeforeFull) {
            state.PauseTiming();
            written = 0;
            writer.reset();
            unlink(file.c_str());
            file = bench::NewFileName();
            writer = std::make_unique<Writer>(file, kLimit);
            state.ResumeTiming();
        }
        if (!writer->Append()) state.SkipWithError("not written");
    }
    writer.reset();
    unlink(file.c_str());
}

// Every record takes the place of an older one.
template <class Writer>
void RecordFull(benchmark::State& state) {
    static const std::string file = [] {
        const std::string name = bench::NewFileName();
        Writer fill(name, kLimit);
        for (int i = 0; i < kUntilFull; ++i) fill.Append();
        return name;
    }();
    Writer writer(file, kLimit);
    for (auto _ : state) {
        if (!writer.Append()) state.SkipWithError("not written");
    }
}

// Flushes after each record, because a log must survive its process. One process, no ring.
void RecordSpdlog(benchmark::State& state) {
    const std::string file = bench::NewFileName();
    spdlog::logger logger("bench", std::make_shared<spdlog::sinks::basic_file_sink_mt>(file));
    logger.set_pattern("%L T%t.S1 %Y-%m-%d %T.%e [%s,%#] %v");
    logger.flush_on(spdlog::level::info);
    const std::string text(kTextLength, 'x');
    for (auto _ : state) {
        logger.log(spdlog::source_loc{"log_bench", 1, "f"}, spdlog::level::info, text);
    }
    unlink(file.c_str());
}

BENCHMARK_TEMPLATE(RecordEmpty, Logging)->Name("log/record_empty/ours");
BENCHMARK_TEMPLATE(RecordEmpty, Bare)->Name("log/record_empty/six_bare_calls");
BENCHMARK(RecordSpdlog)->Name("log/record_empty/spdlog");
BENCHMARK_TEMPLATE(RecordFull, Logging)->Name("log/record_full/ours");
BENCHMARK_TEMPLATE(RecordFull, Bare)->Name("log/record_full/seven_bare_calls");

constexpr int kProcesses = 4;
constexpr std::int64_t kRunTime = 400'000'000;     // ns
constexpr std::uint32_t kRoomForAll = 512u << 20;  // the ring does not wrap

// Shared by the processes of one run.
struct Meeting {
    std::atomic<int> ready{0};
    std::atomic<std::int64_t> start{0};  // Now() at which all begin
    std::atomic<std::int64_t> records{0};
    std::atomic<std::int64_t> longest[kProcesses]{};  // ns of one record
    std::atomic<int> failed{0};
};

// One of the processes: waits for the others, then writes until the time is over.
template <class Writer>
void WriteBeside(Meeting& meeting, const std::string& file, int number) {
    Writer writer(file, kRoomForAll);
    meeting.ready.fetch_add(1);
    std::int64_t before = 0;
    while ((before = meeting.start.load()) == 0) usleep(100);
    const std::int64_t end = before + kRunTime;
    std::int64_t records = 0;
    std::int64_t longest = 0;
    while (before < end) {
        if (!writer.Append()) meeting.failed.store(1);
        const std::int64_t now = bench::Now();
        longest = std::max(longest, now - before);
        before = now;
        ++records;
    }
    meeting.records.fetch_add(records);
    meeting.longest[number].store(longest);
}

template <class Writer>
void RunProcesses(Meeting& meeting) {
    const std::string file = bench::NewFileName();
    pid_t children[kProcesses];
    for (int i = 0; i < kProcesses; ++i) {
        children[i] = fork();
        if (children[i] != 0) continue;
        WriteBeside<Writer>(meeting, file, i);
        _exit(0);
    }
    while (meeting.ready.load() < kProcesses) usleep(100);
    meeting.start.store(bench::Now());
    for (const pid_t child : children) {
        int status = 1;
        waitpid(child, &status, 0);
        if (status != 0) meeting.failed.store(1);
    }
    unlink(file.c_str());
}

template <class Writer>
void Processes(benchmark::State& state) {
    void* shared =
        mmap(nullptr, sizeof(Meeting), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    for (auto _ : state) {
        Meeting& meeting = *new (shared) Meeting;
        RunProcesses<Writer>(meeting);
        const std::int64_t records = std::max<std::int64_t>(1, meeting.records.load());
        state.SetIterationTime(1e-9 * static_cast<double>(kRunTime));
        std::int64_t longest = 0;
        for (const auto& one : meeting.longest) longest = std::max(longest, one.load());
        state.counters["records_per_s"] =
            1e9 * static_cast<double>(records) / static_cast<double>(kRunTime);
        state.counters["worst_wait_ms"] = 1e-6 * static_cast<double>(longest);
        if (meeting.failed.load() != 0) state.SkipWithError("a process failed");
    }
    munmap(shared, sizeof(Meeting));
}

BENCHMARK_TEMPLATE(Processes, Logging)->Name("log/processes/ours")->UseManualTime()->Iterations(1);
BENCHMARK_TEMPLATE(Processes, Bare)
    ->Name("log/processes/six_bare_calls")
    ->UseManualTime()
    ->Iterations(1);
BENCHMARK_TEMPLATE(Processes, BarePolling)
    ->Name("log/processes/polling_bare_calls")
    ->UseManualTime()
    ->Iterations(1);

}  // namespace
