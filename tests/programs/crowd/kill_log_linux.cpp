// kill-log: kills a process at random moments while its two threads append to a log file that other
// processes append to as well and one more reads. After each kill, and again when one of the others
// has appended, the file must be sound and hold every record whose Log call had returned, except
// those that are older than all that it holds. The record that was being written stands in its
// order or is not there. One more kill for each twenty falls on a process that creates its file.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <thread>

#include "log_file/log_recorder.h"
#include "ring_check.h"
#include "verbs.h"

namespace {

using namespace stress;

constexpr std::uint32_t kThreads = 2;  // of the process that is killed
constexpr std::uint32_t kPerLife = kThreads + 1;
constexpr std::uint64_t kSmallestSize = 50;  // of a slot with a numbered record

// What the command line asks for.
struct TPlan {
    std::uint32_t kills = 300;
    DWORD ring = 64 << 10;      // bytes
    std::uint32_t writers = 2;  // that are not killed
    bool held = false;          // nine kills in ten while the victim holds the log's lock
    std::uint32_t seed = 0;     // 0: another one each time
};

struct TShared {
    std::atomic<bool> stop{false};
    std::atomic<std::uint64_t> looks{0};
};

// A log file that the process appends to.
class TOpenLog {
  public:
    TOpenLog(const std::string& file, DWORD ring) {
        if (!recorder_.Open(file.c_str(), ring)) Fail("the log does not open");
        Mox::SetLogRecorder(&recorder_);
        counter_ = std::make_unique<TCounter>(file);
    }
    const TCounter& Counter() const { return *counter_; }

  private:
    Mox::TLogRecorder recorder_;
    std::unique_ptr<TCounter> counter_;
};

class TCampaign {
  public:
    TCampaign(const std::string& folder, const TPlan& plan)
        : folder_(folder),
          file_(folder + "/shared.log"),
          plan_(plan),
          creations_(plan.kills / 20),
          random_(plan.seed != 0 ? plan.seed : std::random_device()()) {}

    void Run() {
        std::vector<pid_t> others;
        for (std::uint32_t w = 0; w < plan_.writers; ++w) {
            others.push_back(Start([this, w] { WriteOn(w); }));
        }
        while (states_[0].Returned().number == 0) SleepFor(1000);
        others.push_back(Start([this] { Look(); }));
        for (std::uint32_t life = 0; life < plan_.kills; ++life) {
            KillOne(life);
            if (!AllLive()) Fail("one of the others ended");
        }
        shared_->stop = true;
        for (const pid_t other : others) {
            if (!EndsWell(other)) Fail("one of the others failed");
        }
        const TRingCheck end = Inspect(file_, Everyone(plan_.kills), "the end");
        for (std::uint32_t i = 0; i < creations_; ++i) KillCreator(plan_.kills + i);
        Report(end);
    }

  private:
    std::uint32_t WriterOf(std::uint32_t life) const { return plan_.writers + kPerLife * life; }

    TCrowd Everyone(std::uint32_t lives) const {
        return {states_, plan_.writers, plan_.writers, WriterOf(lives)};
    }

    void WriteOn(std::uint32_t writer) {
        const TOpenLog log(file_, plan_.ring);
        std::minstd_rand random(writer + 1);
        while (!shared_->stop) {
            states_[writer].LogNext(writer, log.Counter());
            SleepFor(random() % 3000);
        }
    }

    void WriteUntilKilled(const std::string& file, std::uint32_t life) {
        const TOpenLog log(file, plan_.ring);
        const auto write = [&](std::uint32_t writer) {
            while (true) states_[writer].LogNext(writer, log.Counter());
        };
        const std::thread second(write, WriterOf(life) + 1);
        write(WriterOf(life));
    }

    // At any time a reader can read whole records. Under the lock it must leave nothing out.
    void Look() {
        while (!shared_->stop) {
            Mox::TLogReader reader;
            if (!reader.Open(file_.c_str())) Fail("the file cannot be read");
            TNumber n;
            while (const Mox::TLogMsg* message = reader.Next()) {
                if (!ReadNumber(*message, n)) Fail("the reader shows a record that is not whole");
            }
            ++shared_->looks;
            if (reader.SkipCount() > 0 && reader.Copy() == Mox::TLogCopy::Locked) {
                Fail("the reader leaves something out");
            }
            SleepFor(10000);
        }
    }

    void KillOne(std::uint32_t life) {
        const pid_t victim = Start([this, life] { WriteUntilKilled(file_, life); });
        // Some die before they have written anything.
        if (random_() % 16 != 0) {
            const auto records = 1 + static_cast<std::uint32_t>(random_() % 20);
            const TWriterState* const mine = states_ + WriterOf(life);
            const auto busy = [&] {
                return mine[0].Started().number + mine[1].Started().number >= records;
            };
            WaitUntil(busy, "to write", 20);
        }
        SleepFor(random_() % 300);
        if (plan_.held && random_() % 10 != 0) StopInTheLock(victim);
        Kill(victim);
        const std::string when = "life " + std::to_string(life);
        Count(Inspect(file_, Everyone(life + 1), when), life);
        std::vector<std::uint32_t> before(plan_.writers);
        for (std::uint32_t w = 0; w < plan_.writers; ++w) before[w] = states_[w].Started().number;
        const auto goes_on = [&] {
            for (std::uint32_t w = 0; w < plan_.writers; ++w) {
                if (states_[w].Returned().number > before[w]) return true;
            }
            return false;
        };
        WaitUntil(goes_on, "to append after a kill");
        Inspect(file_, Everyone(life + 1), when + ", after the next append");
    }

    void StopInTheLock(pid_t victim) {
        for (int tries = 0; tries < 200; ++tries) {
            if (StopsInTheLock(victim, file_)) {
                ++stopped_in_the_lock_;
                return;
            }
            kill(victim, SIGCONT);
            SleepFor(random_() % 200);
        }
    }

    // The next process must find a file that it can use.
    void KillCreator(std::uint32_t life) {
        const std::string file = folder_ + "/fresh.log";
        std::filesystem::remove(file);
        const pid_t victim = Start([&] { WriteUntilKilled(file, life); });
        if (random_() % 2 == 0) {
            // The moment at which the file appears is the one of interest.
            WaitUntil([&] { return std::filesystem::exists(file); }, "to make a file", 0);
            SleepFor(random_() % 300);
        } else {
            SleepFor(random_() % 10000);
        }
        Kill(victim);
        const std::uint32_t next = WriterOf(life) + kThreads;
        const pid_t follower = Start([&] {
            const TOpenLog log(file, plan_.ring);
            states_[next].LogNext(next, log.Counter());
        });
        if (!EndsWell(follower)) Fail("a process cannot use a file whose maker was killed");
        const TCrowd crowd{states_, 0, WriterOf(life), WriterOf(life + 1)};
        const TRingCheck check = Inspect(file, crowd, "new file " + std::to_string(life));
        if (check.Records() == 1) ++created_empty_;
    }

    TRingCheck Inspect(const std::string& file, const TCrowd& crowd, const std::string& when) {
        TRingCheck check(crowd);
        const std::vector<std::uint8_t> bytes = CopyUnderLock(file);
        const std::string fault = check.Check(bytes);
        if (fault.empty()) return check;
        std::ofstream(folder_ + "/damaged.log", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        Fail(when + ": " + fault);
    }

    void Count(const TRingCheck& check, std::uint32_t life) {
        for (std::uint32_t w = WriterOf(life); w < WriterOf(life) + kThreads; ++w) {
            const std::uint32_t returned = states_[w].Returned().number;
            of_the_dead_ += returned;
            if (states_[w].Started().number == returned) continue;
            ++interrupted_;
            if (check.Landed({w, returned + 1})) ++landed_;
        }
        // A ring that has wrapped is full. Only the room of one record at each end may be free, and
        // the room that killed writers had made.
        if (check.Counter() < 3 * plan_.ring / kSmallestSize) return;
        least_used_ = std::min(least_used_, check.Used());
        if (check.Used() + 6 * kLargestSlot < plan_.ring) Fail("the ring has lost old records");
    }

    void Report(const TRingCheck& end) {
        std::uint64_t of_the_others = 0;
        std::uint64_t longest = 0;
        for (std::uint32_t w = 0; w < plan_.writers; ++w) {
            of_the_others += states_[w].Returned().number;
            longest = std::max(longest, states_[w].Longest());
        }
        // Only interrupted records may be counted without having returned.
        const std::uint64_t returned = of_the_dead_ + of_the_others;
        if (end.Counter() < returned || end.Counter() > returned + interrupted_) {
            Fail("the change counter is " + std::to_string(end.Counter()) + " after " +
                 std::to_string(returned) + " records");
        }
        std::printf("kills: %u, of them in the lock: %u, and %u of a process that makes its file\n",
                    plan_.kills, stopped_in_the_lock_, creations_);
        std::printf("records logged: %ju by processes that were killed, %ju by %u others\n",
                    static_cast<std::uintmax_t>(of_the_dead_),
                    static_cast<std::uintmax_t>(of_the_others), plan_.writers);
        std::printf("records being logged at a kill: %u, of them in the file: %u\n", interrupted_,
                    landed_);
        std::printf("other records lost, damaged, doubled or out of order: 0\n");
        std::printf("change counter: %ju\n", static_cast<std::uintmax_t>(end.Counter()));
        std::printf("least of the ring's %u bytes in use: %ju\n", static_cast<unsigned>(plan_.ring),
                    static_cast<std::uintmax_t>(std::min<std::uint64_t>(least_used_, plan_.ring)));
        std::printf("looks of the reader: %ju, refused 0\n",
                    static_cast<std::uintmax_t>(shared_->looks.load()));
        std::printf("longest Log call of the others: %.1f ms\n",
                    static_cast<double>(longest) / 1e3);
        std::printf("new files of a killed maker that held nothing yet: %u\n", created_empty_);
    }

    const std::string folder_;
    const std::string file_;
    const TPlan plan_;
    const std::uint32_t creations_;
    TShared* const shared_ = NewShared<TShared>();
    TWriterState* const states_ = NewShared<TWriterState>(WriterOf(plan_.kills + creations_));
    std::mt19937 random_;
    std::uint32_t stopped_in_the_lock_ = 0;
    std::uint64_t of_the_dead_ = 0;
    std::uint32_t interrupted_ = 0;
    std::uint32_t landed_ = 0;
    std::uint32_t created_empty_ = 0;
    std::uint64_t least_used_ = UINT64_MAX;
};

}  // namespace

int stress::KillLog(const TArguments& arguments) {
    TPlan plan;
    bool equal = false;
    for (std::size_t i = 1; i + 1 < arguments.size(); i += 2) {
        const std::string& name = arguments[i];
        const std::string& value = arguments[i + 1];
        const auto number = [&] { return static_cast<std::uint32_t>(std::stoul(value)); };
        if (name == "--kills") {
            plan.kills = number();
        } else if (name == "--ring") {
            plan.ring = number();
        } else if (name == "--writers") {
            plan.writers = number();
        } else if (name == "--sizes") {
            equal = value == "equal";
        } else if (name == "--held") {
            plan.held = value == "yes";
        } else if (name == "--seed") {
            plan.seed = number();
        } else {
            Fail("unknown option " + name);
        }
    }
    // In a small ring the largest record overwrites all others.
    largest_block = std::min(equal ? 100U : kLargestBlock, std::max(plan.ring, 300U) - 300U);
    equal_blocks = equal;
    TCampaign(arguments[0], plan).Run();
    return 0;
}
