// hold: stops a process in the middle of an append, while it holds the lock of
// the log's header, and watches four others: a process whose threads log and work, one that reads
// the log, one that starts, and one that ends. Then the stopped process goes on; in a second round
// it is killed. In both rounds all others must go on, and no record may be lost.
#include <fcntl.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "driver_global/installation.h"
#include "log_file/log_recorder.h"
#include "mox_log/registry.h"
#include "qv_rtl_c.h"
#include "ring_check.h"
#include "verbs.h"

namespace {

using namespace stress;

constexpr DWORD kLimit = 0x500000;
constexpr const WCHAR* kProduct = TEXT("Software\\Halvorn\\Vantrel");

enum TWriter : std::uint32_t { kHolder, kFirstWaiter, kSecondWaiter, kWriters };

struct TShared {
    std::atomic<bool> stop{false};
    std::atomic<std::uint32_t> work{0};
    std::atomic<std::uint64_t> processor_time{0};  // microseconds, of the process that waits
};

double Milliseconds(std::uint64_t microseconds) {
    return static_cast<double>(microseconds) / 1e3;
}

class TRound {
  public:
    TRound(const std::string& folder, const std::string& file) : folder_(folder), file_(file) {}

    // `ends`: kill the holder; otherwise let it go on.
    void Run(bool ends) {
        const pid_t holder = Start([this] { Write(kHolder); });
        WaitUntil([this] { return states_[kHolder].Started().number > 10; }, "to log");
        const pid_t worker = Start([this] { WorkAndLog(); });
        WaitUntil([this] { return states_[kSecondWaiter].Started().number > 10; }, "to log");
        std::filesystem::remove(folder_ + "/leave");
        const pid_t leaver = StartProgram("leave");
        const std::uint32_t before = WorkIn(2'000'000);
        const int tries = StopWhileItHolds(holder);
        std::printf("stopped while it holds the lock, at try %d\n", tries);
        SleepFor(10000);
        const std::uint32_t waiting_at = Logged();
        const std::uint64_t processor_before = shared_->processor_time;
        const std::uint32_t during = WorkIn(2'000'000);
        if (Logged() != waiting_at) Fail("somebody logged without the lock");
        std::printf("the others: nothing logged; other work in 2 s: %u before, %u meanwhile\n",
                    before, during);
        if (during < before / 4) Fail("other work came to a halt");
        std::printf("processor time of the process that works and waits: %.0f ms of the 2 s\n",
                    Milliseconds(shared_->processor_time - processor_before));
        Read();
        std::ofstream(folder_ + "/leave").put('1');
        const std::uint64_t left_at = Now();
        if (!EndsWell(leaver)) Fail("the process that ends has failed");
        std::printf("a process that ends while its thread waits: gone after %.0f ms\n",
                    Milliseconds(Now() - left_at));
        const pid_t starter = StartProgram("start");
        SleepFor(500'000);
        if (waitpid(starter, nullptr, WNOHANG) != 0) Fail("a process started without the lock");
        std::printf("a process that starts: waits with its first log line\n");
        GoOn(holder, ends);
        if (!EndsWell(starter)) Fail("the process that started has failed");
        shared_->stop = true;
        if (!EndsWell(worker) || (!ends && !EndsWell(holder))) Fail("a writer failed");
        CheckFile(ends);
    }

  private:
    void Open() {
        if (!recorder_.Open(file_.c_str(), kLimit)) Fail("the log does not open");
        Mox::SetLogRecorder(&recorder_);
    }

    void Write(std::uint32_t writer) {
        Open();
        WriteOn(writer);
    }

    void WriteOn(std::uint32_t writer) {
        const TCounter counter(file_);
        while (!shared_->stop) {
            states_[writer].LogNext(writer, counter);
            if (writer != kHolder) SleepFor(1000);
        }
    }

    void WorkAndLog() {
        Open();
        std::thread first([this] { WriteOn(kFirstWaiter); });
        std::thread second([this] { WriteOn(kSecondWaiter); });
        const std::string request = folder_ + "/request.xml";
        const std::string response = folder_ + "/response.xml";
        std::ofstream(request) << "<query><global/></query>";
        Mox::WriteRegistry(HKEY_LOCAL_MACHINE, kProduct, TEXT("Language"), TEXT("en"));
        while (!shared_->stop) {
            DoXMLA(request.c_str(), response.c_str());
            if (GetPrinterLanguage().Length() != 2) Fail("the registry does not answer");
            ++shared_->work;
            shared_->processor_time = static_cast<std::uint64_t>(std::clock());
        }
        first.join();
        second.join();
    }

    std::uint32_t WorkIn(std::uint64_t microseconds) {
        const std::uint32_t before = shared_->work;
        SleepFor(microseconds);
        return shared_->work - before;
    }

    std::uint32_t Logged() const {
        std::uint32_t logged = 0;
        for (std::uint32_t w = 0; w < kWriters; ++w) logged += states_[w].Returned().number;
        return logged;
    }

    int StopWhileItHolds(pid_t holder) {
        for (int tries = 1; tries < 100000; ++tries) {
            if (StopsInTheLock(holder, file_)) return tries;
            kill(holder, SIGCONT);
            SleepFor(static_cast<std::uint64_t>(tries * 7919 % 500));
        }
        Fail("the process was never stopped while it held the lock");
    }

    void Read() {
        const std::uint64_t began = Now();
        Mox::TLogReader reader;
        if (!reader.Open(file_.c_str())) Fail("the file cannot be read");
        std::uint32_t records = 0;
        TNumber n;
        while (const Mox::TLogMsg* message = reader.Next()) {
            if (IsNumbered(*message) && !ReadNumber(*message, n)) {
                Fail("the reader shows a record that is not whole");
            }
            ++records;
        }
        std::printf("a reader: %u whole records after %.0f ms\n", records,
                    Milliseconds(Now() - began));
    }

    pid_t StartProgram(const char* what) {
        return Start([&] {
            const std::string go = folder_ + "/leave";
            execl("/proc/self/exe", "crowd", "hold", what, go.c_str(), nullptr);
            Fail("no program");
        });
    }

    void GoOn(pid_t holder, bool ends) {
        const std::uint32_t first = states_[kFirstWaiter].Started().number;
        const std::uint32_t second = states_[kSecondWaiter].Started().number;
        const std::uint64_t began = Now();
        if (ends) {
            Kill(holder);
        } else {
            kill(holder, SIGCONT);
        }
        WaitUntil(
            [&] {
                return states_[kFirstWaiter].Returned().number >= first &&
                       states_[kSecondWaiter].Returned().number >= second;
            },
            "to log again", 100);
        std::printf("%s: the others go on after %.1f ms\n",
                    ends ? "the holder is killed" : "the holder goes on",
                    Milliseconds(Now() - began));
    }

    // Only the killed holder may have lost a record.
    void CheckFile(bool ends) {
        const std::uint32_t living = ends ? 0U : kWriters;
        TRingCheck check(TCrowd{states_, living, 0, kWriters});
        const std::string fault = check.Check(CopyUnderLock(file_));
        if (!fault.empty()) Fail(fault);
        const std::uint32_t number = states_[kHolder].Returned().number;
        std::printf("records of the writers: %u, lost 0", Logged());
        std::printf(ends ? ", and the holder's %s\n" : "\n",
                    check.Landed({kHolder, number + 1}) ? "last is there" : "last is not there");
    }

    const std::string folder_;
    const std::string file_;
    TShared* const shared_ = NewShared<TShared>();
    TWriterState* const states_ = NewShared<TWriterState>(kWriters);
    Mox::TLogRecorder recorder_;
};

// A process that lives until the file `go` exists, while another of its threads logs.
int Leave(const std::string& go) {
    std::thread([] {
        while (true) {
            Mox::GetLogger()->Log('i', TEXT("leaver"), 1, TEXT("text"), UnicodeString(), nullptr,
                                  0);
            SleepFor(20000);
        }
    }).detach();
    while (!std::filesystem::exists(go)) SleepFor(1000);
    return 0;
}

}  // namespace

int stress::Hold(const TArguments& arguments) {
    const std::string& what = arguments[0];
    if (arguments.size() == 2) return what == "leave" ? Leave(arguments[1]) : 0;
    const std::string file = what + "/shared.log";
    Mox::WriteRegistry(HKEY_LOCAL_MACHINE, kProduct, TEXT("Logfile"), file.c_str());
    for (const bool ends : {false, true}) {
        std::filesystem::remove(file);
        TRound(what, file).Run(ends);
    }
    return 0;
}
