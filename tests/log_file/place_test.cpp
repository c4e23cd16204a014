// Where records stand, and a log file made in memory.
#include "log_file/log_fixture.h"
#include "log_file/log_image.h"

using namespace test;

namespace {

constexpr DWORD kLimit = 1000;
constexpr DWORD kSlot = 4 + 30 + 7 + 2 + 20;
constexpr int kInRing = (kLimit - 96) / kSlot;

class LogPlace : public LogFileTest {
  protected:
    void Fill(int count) {
        Record(kLimit);
        for (int i = 0; i < count; ++i) Log(Numbered(i));
        Close();
    }
    static std::string Numbered(int i) {
        const std::string digits = std::to_string(i);
        return digits + std::string(20 - digits.size(), '.');
    }
};

TEST_F(LogPlace, NumbersGoOnWhenTheRingWraps) {
    Fill(20);
    Mox::TLogReader reader;
    ASSERT_TRUE(reader.Open(Name().c_str()));
    EXPECT_EQ(reader.Copy(), Mox::TLogCopy::Locked);
    EXPECT_EQ(std::uint64_t{reader.Header().counter}, 20u);
    EXPECT_EQ(reader.Place().size, 0u);
    for (int i = 20 - kInRing; i < 20; ++i) {
        const Mox::TLogMsg* message = reader.Next();
        ASSERT_NE(message, nullptr);
        EXPECT_EQ(Narrow(message->text), Numbered(i));
        EXPECT_EQ(reader.Place().number, static_cast<unsigned>(i + 1));
        EXPECT_EQ(reader.Place().offset, 96 + kSlot * static_cast<unsigned>(i % kInRing));
        EXPECT_EQ(reader.Place().size, kSlot);
    }
    EXPECT_EQ(reader.Next(), nullptr);
}

TEST_F(LogPlace, SeekGoesToTheNumberOrTheNextThere) {
    Fill(20);
    const struct {
        std::uint64_t number;
        int first;
    } rows[] = {{0, 20 - kInRing}, {1, 20 - kInRing}, {18, 17},
                {20, 19},          {21, -1},          {UINT64_MAX, -1}};
    for (const auto& row : rows) {
        Mox::TLogReader reader;
        ASSERT_TRUE(reader.Open(Name().c_str()));
        reader.Next();
        reader.Seek(row.number);
        const Mox::TLogMsg* message = reader.Next();
        EXPECT_EQ(message == nullptr ? "" : Narrow(message->text),
                  row.first < 0 ? "" : Numbered(row.first))
            << row.number;
        while (reader.Next() != nullptr) {
        }
        EXPECT_EQ(reader.SkipCount(), 0) << row.number;
    }
}

TEST_F(LogPlace, DamageInFrontDoesNotMoveTheNewestNumbers) {
    Fill(kInRing);
    LogImage image = Image();
    image[96 + kSlot] ^= 0xFF;
    Replace(image);
    Mox::TLogReader reader;
    ASSERT_TRUE(reader.Open(Name().c_str()));
    reader.Seek(kInRing);
    ASSERT_NE(reader.Next(), nullptr);
    EXPECT_EQ(reader.Place().number, static_cast<unsigned>(kInRing));
    EXPECT_EQ(reader.Next(), nullptr);
    EXPECT_EQ(reader.SkipCount(), 2);
}

TEST_F(LogPlace, WhatIsNoLogHasNoRecords) {
    const std::string text(5000, 'a');
    Mox::TLogReader reader;
    EXPECT_FALSE(reader.StartWithoutHeader());
    for (const std::size_t size : {std::size_t{0}, std::size_t{50}, text.size()}) {
        const bool started = reader.Assign(text.data(), size);
        EXPECT_EQ(started, size == 0);
        EXPECT_FALSE(reader.StartWithoutHeader());
        EXPECT_EQ(reader.Next(), nullptr);
    }
}

TEST_F(LogPlace, AnImageIsReadAsItWasFilled) {
    Record(0x10000);
    Log("first", TEXT("block"), {1, 2, 3});
    Log("");
    Log("third", TEXT("only a label"));
    Close();
    const LogImage original = Image();
    Mox::TLogReader reader;
    ASSERT_TRUE(reader.Open(Name().c_str()));
    Mox::TLogImage image;
    while (const Mox::TLogMsg* message = reader.Next()) {
        Mox::TLogMsg copy = *message;
        ASSERT_TRUE(image.Append(copy));
    }
    EXPECT_EQ(image.Finish(0x10000), original);
    EXPECT_EQ(Mox::TLogImage().Finish(0).size(), 96u);
}

}  // namespace
