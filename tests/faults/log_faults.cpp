// One log record: appended to a plain ring, and to one that is full.
#include <memory>
#include <vector>

#include "faults/scenario_tests.h"
#include "log_file/log_reader.h"
#include "log_file/log_recorder.h"
#include "support/clean_logger.h"
#include "support/fresh_host_root.h"

namespace faults {

namespace {

constexpr const WCHAR* kFile = TEXT("C:\\shared.log");

// The ring holds records before the run; the faulty record, then a good one are added. Whatever
// fails may cost the faulty record, and of a full ring the oldest ones.
template <DWORD kLimit, int kBefore>
class Record : public Scenario {
  public:
    void Prepare() override {
        DeleteFileW(kFile);
        Connect();
        for (int i = 0; i < kBefore; ++i) Log(i);
    }
    void Run() override { Log(kBefore); }
    void Check(const Step& step) override {
        EXPECT_TRUE(!step.threw || step.plan.kind == Kind::Memory)
            << "logging throws: " << step.thrown;
        Log(kBefore + 1);
        Disconnect();
        CheckFile(step);
    }

  private:
    void Connect() {
        recorder_ = std::make_unique<Mox::TLogRecorder>();
        ASSERT_TRUE(recorder_->Open(kFile, kLimit));
        Mox::SetLogRecorder(recorder_.get());
    }
    void Disconnect() {
        Mox::ClearLogRecorder(recorder_.get());
        recorder_.reset();
    }
    static void Log(int line) {
        static BYTE block[16] = {1, 2, 3};
        test::CleanLogger::Logger().Log('X', TEXT("tests"), line, TEXT("a record of the log"),
                                        TEXT("block"), block, sizeof block);
    }
    // Lines are the numbers of the records. Of the faulty one only the place is known: the append
    // goes on when a write fails, so that anything may stand there, or nothing that can be read.
    void CheckFile(const Step& step) {
        Mox::TLogReader reader;
        ASSERT_TRUE(reader.Open(kFile));
        std::vector<int> lines;
        while (const Mox::TLogMsg* message = reader.Next()) {
            EXPECT_TRUE(step.hit || IsWhole(*message));
            lines.push_back(IsWhole(*message) ? message->line : -1);
        }
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back(), kBefore + 1) << "the record after the fault is missing";
        lines.pop_back();
        if (!lines.empty() && lines.back() != kBefore - 1) {
            EXPECT_TRUE(step.hit || lines.back() == kBefore);
            lines.pop_back();
        }
        std::vector<int> expected;
        for (int line = lines.empty() ? kBefore : lines.front(); line < kBefore; ++line) {
            expected.push_back(line);
        }
        EXPECT_EQ(lines, expected);
        if (!step.hit) oldest_ = lines.empty() ? 0 : lines.front();
        EXPECT_TRUE(lines.empty() ? kBefore == 0 : lines.front() <= oldest_)
            << "older ones are missing";
        EXPECT_TRUE(step.hit || reader.SkipCount() == 0);
    }
    static bool IsWhole(const Mox::TLogMsg& message) {
        return message.text == UnicodeString(TEXT("a record of the log")) && message.dataSize == 16;
    }

    int oldest_ = 0;
    test::FreshHostRoot root_;
    test::CleanLogger logger_;
    std::unique_ptr<Mox::TLogRecorder> recorder_;
};

class LogRecord : public Record<0x500000, 3> {
  public:
    static constexpr const char* kName = "log record";
};

class LogRecordFullRing : public Record<1500, 40> {
  public:
    static constexpr const char* kName = "log record, full ring";
};

class FirstLogRecord : public Record<0x500000, 0> {
  public:
    static constexpr const char* kName = "first log record";
};

}  // namespace

using Scenarios = testing::Types<LogRecord, LogRecordFullRing, FirstLogRecord>;
INSTANTIATE_TYPED_TEST_SUITE_P(Log, Faults, Scenarios);

}  // namespace faults
