#include "faults/fault_loop.h"

#include <windows.h>

#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

namespace faults {

namespace {

constexpr unsigned kSecondsPerStep = 30;
constexpr int kMostFailures = 12;

// The step that runs now. The signal handler reports it when the program dies in it.
std::array<char, 256> now_running;

[[noreturn]] void ReportEnd(int signal) {
    Disarm();
    const char* const how = signal == SIGALRM ? "hangs at: " : "breaks down at: ";
    for (const char* text : {how, static_cast<const char*>(now_running.data()), "\n"}) {
        if (write(STDERR_FILENO, text, std::strlen(text)) < 0) break;
    }
    std::_Exit(3);
}

// The number of open descriptors of the process, that of the listing itself included.
int OpenDescriptors() {
    DIR* const folder = opendir("/proc/self/fd");
    int count = 0;
    while (readdir(folder) != nullptr) ++count;
    closedir(folder);
    return count;
}

// What the process holds at one moment.
struct Holdings {
    long blocks = BlocksInUse();
    int descriptors = OpenDescriptors();
};

struct Totals {
    int names = 0, calls = 0, steps = 0, hits = 0;
};

class LoopTest : public testing::Test {
  public:
    LoopTest(Kind kind, std::string name, Tests::Make make)
        : kind_(kind), name_(std::move(name)), make_(std::move(make)) {
        const char* const wanted = std::getenv("QV_FAULTS");
        every_ = wanted != nullptr && std::string_view(wanted) == "all";
        few_ = wanted != nullptr && std::string_view(wanted) == "few";
    }

    void TestBody() override {
        for (const int signal : {SIGALRM, SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL}) {
            std::signal(signal, ReportEnd);
        }
        scenario_ = make_();
        // The first run makes objects that a process makes once and keeps. The second one is
        // counted.
        for (int i = 0; i < 2; ++i) RunStep(Plan{kind_});
        const std::vector<UsedSite> sites = Used();
        totals_.names = static_cast<int>(sites.size());
        totals_.calls = CallsSeen();
        Loop(Plan{kind_});
        Loop(Plan{kind_, nullptr, 0, true});
        if (kind_ != Kind::Memory) {
            for (const UsedSite& used : sites) LoopOver(used);
        }
        std::printf("[ faults   ] %s: %d names, %d calls, %d steps, %d with a failing call\n",
                    name_.c_str(), totals_.names, totals_.calls, totals_.steps, totals_.hits);
        scenario_.reset();
    }

  private:
    struct UsedSite {
        const Site* site;
        int calls;
    };

    std::vector<UsedSite> Used() const {
        std::vector<UsedSite> sites;
        for (Site* site = FirstSite(); site != nullptr; site = site->next) {
            if (site->kind == kind_ && site->calls > 0) sites.push_back({site, site->calls});
        }
        return sites;
    }

    void LoopOver(const UsedSite& used) {
        if (few_) {
            TakeTurns(used);
            return;
        }
        for (std::size_t choice = 0; choice < used.site->codes.size(); ++choice) {
            Loop(Plan{kind_, used.site, 0, false, choice});
        }
        Loop(Plan{kind_, used.site, 0, true});
    }

    // Every call fails once and every code is used once, not every call with every code. Then all
    // calls fail together.
    void TakeTurns(const UsedSite& used) {
        const int codes = static_cast<int>(used.site->codes.size());
        for (int turn = 0; turn < std::max(used.calls, codes) && failed_ < kMostFailures; ++turn) {
            const auto choice = static_cast<std::size_t>(turn % codes);
            RunAgainWhenItGrows(Plan{kind_, used.site, turn % used.calls + 1, false, choice});
        }
        RunAgainWhenItGrows(Plan{kind_, used.site, 1, true});
    }

    static int FailedParts() {
        return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
    }

    // Takes every call of a short scenario. In a long one the steps grow with the number.
    int Next(int nth) const {
        return nth + (every_ ? 1 : 1 + nth / (kind_ == Kind::Memory ? 60 : 30));
    }

    // Ends after a few failed steps, because more of them say nothing new.
    void Loop(Plan plan) {
        for (plan.nth = 1; failed_ < kMostFailures; plan.nth = Next(plan.nth)) {
            if (!RunAgainWhenItGrows(plan)) return;
        }
    }

    // A leak grows with every run. An object that is made once and kept does not.
    bool RunAgainWhenItGrows(const Plan& plan) {
        for (int run = 0;; ++run) {
            const Holdings before;
            const int failed_before = failed_;
            const bool hit = RunStep(plan);
            const Holdings after;
            const bool grew =
                after.blocks > before.blocks || after.descriptors > before.descriptors;
            if (!grew || failed_ > failed_before) return hit;
            if (run < 2) continue;
            ++failed_;
            ADD_FAILURE() << name_ << ", " << plan.Text() << ": " << after.blocks - before.blocks
                          << " blocks and " << after.descriptors - before.descriptors
                          << " descriptors are left behind";
            return hit;
        }
    }

    bool RunStep(const Plan& plan) {
        const std::string text = name_ + ", " + plan.Text();
        text.copy(now_running.data(), now_running.size() - 1);
        now_running[std::min(text.size(), now_running.size() - 1)] = 0;
        const testing::ScopedTrace trace(__FILE__, __LINE__, text);
        alarm(kSecondsPerStep);
        scenario_->Prepare();
        const int parts = FailedParts();
        const Step step{plan, RunArmed(plan)};
        scenario_->Check(step);
        alarm(0);
        failed_ += FailedParts() > parts;
        ++totals_.steps;
        totals_.hits += step.hit;
        return step.hit;
    }

    // True when a call failed on demand.
    bool RunArmed(const Plan& plan) {
        std::exception_ptr thrown;
        try {
            const Armed armed(plan);
            scenario_->Run();
        } catch (...) {
            thrown = std::current_exception();
        }
        const bool hit = WasHit();
        if (thrown != nullptr && !scenario_->MayThrow(kind_)) {
            ADD_FAILURE() << "an exception comes out: " << What(thrown);
        }
        return hit;
    }

    static std::string What(const std::exception_ptr& thrown) {
        try {
            std::rethrow_exception(thrown);
        } catch (const std::exception& failure) {
            return failure.what();
        } catch (...) {
            return "a message";
        }
    }

    const Kind kind_;
    const std::string name_;
    const Tests::Make make_;
    std::unique_ptr<Scenario> scenario_;
    bool every_ = false, few_ = false;
    int failed_ = 0;
    Totals totals_;
};

}  // namespace

Tests::Tests(const char* name, const Make& make) {
    for (const Kind kind : {Kind::Host, Kind::System, Kind::Memory}) {
        const std::string full = std::string(name) + ", " + KindText(kind) + "s";
        testing::RegisterTest("Faults", full.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                              [=]() -> testing::Test* { return new LoopTest(kind, full, make); });
    }
}

}  // namespace faults
