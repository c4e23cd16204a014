// One log record: appended to a plain ring, and to one that is full.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "faults/fault_loop.h"
#include "log_file/log_reader.h"
#include "log_file/log_recorder.h"
#include "support/clean_logger.h"
#include "support/fresh_host_root.h"

namespace faults {

namespace {

constexpr const WCHAR* kFile = TEXT("C:\\shared.log");

struct Row {
    const char* name;
    DWORD limit;  // of the ring, in bytes
    int before;   // records that are in it
};
constexpr Row kRows[] = {
    {"log record", 0x500000, 3},
    {"log record, full ring", 1500, 40},
    {"first log record", 0x500000, 0},
    {"log line without a file", 0, 0},
};

// Adds the faulty record, then a good one. A fault may cost the faulty record, and of a full ring
// the oldest ones.
class Record : public Scenario {
  public:
    explicit Record(const Row& row) : Scenario(Throws::Never), row_(row) {}
    void Prepare() override {
        DeleteFileW(kFile);
        Connect();
        for (int i = 0; i < row_.before; ++i) Log(i);
    }
    void Run() override { Log(row_.before); }
    void Check(const Step& step) override {
        Log(row_.before + 1);
        Disconnect();
        if (row_.limit != 0) CheckFile(step);
    }

  private:
    void Connect() {
        if (row_.limit == 0) return;
        recorder_ = std::make_unique<Mox::TLogRecorder>();
        ASSERT_TRUE(recorder_->Open(kFile, row_.limit));
        Mox::SetLogRecorder(recorder_.get());
    }
    void Disconnect() {
        Mox::ClearLogRecorder(recorder_.get());
        recorder_.reset();
    }
    void Log(int line) {
        static BYTE block[16] = {1, 2, 3};
        test::CleanLogger::Logger().Log('X', source_, line, text_, label_, block, sizeof block);
    }
    // The line of a record is its number. A failed write does not stop the append, so that anything
    // may stand in the place of the faulty record.
    void CheckFile(const Step& step) {
        Mox::TLogReader reader;
        ASSERT_TRUE(reader.Open(kFile));
        std::vector<int> lines;
        while (const Mox::TLogMsg* message = reader.Next()) {
            EXPECT_TRUE(step.hit || IsWhole(*message));
            lines.push_back(IsWhole(*message) ? message->line : -1);
        }
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back(), row_.before + 1) << "the record after the fault is missing";
        lines.pop_back();
        if (!lines.empty() && lines.back() != row_.before - 1) {
            EXPECT_TRUE(step.hit || lines.back() == row_.before);
            lines.pop_back();
        }
        std::vector<int> expected;
        for (int line = lines.empty() ? row_.before : lines.front(); line < row_.before; ++line) {
            expected.push_back(line);
        }
        EXPECT_EQ(lines, expected);
        if (!step.hit) oldest_ = lines.empty() ? 0 : lines.front();
        EXPECT_TRUE(lines.empty() ? row_.before == 0 : lines.front() <= oldest_)
            << "older ones are missing";
        EXPECT_TRUE(step.hit || reader.SkipCount() == 0);
    }
    static bool IsWhole(const Mox::TLogMsg& message) {
        return message.text == TEXT("a record of the log") && message.dataSize == 16;
    }

    const Row& row_;
    const UnicodeString source_ = TEXT("tests"), text_ = TEXT("a record of the log");
    const UnicodeString label_ = TEXT("block");
    int oldest_ = 0;  // record that a run without a fault leaves
    test::FreshHostRoot root_;
    test::CleanLogger logger_;
    std::unique_ptr<Mox::TLogRecorder> recorder_;
};

const bool kAdded = [] {
    for (const Row& row : kRows) Tests(row.name, [&row] { return std::make_unique<Record>(row); });
    return true;
}();

}  // namespace

}  // namespace faults
