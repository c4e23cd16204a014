// The C calls of the log: the record that a line becomes, and reading records as they come.
#include "qv_rtl_main/log_calls.h"

#include "log_file/log_fixture.h"
#include "log_file/log_follower.h"

using namespace test;

namespace {

constexpr DWORD kLimit = 1000;

class LogCalls : public LogFileTest {
  protected:
    void TearDown() override {
        QVCloseLog(log_);
        LogFileTest::TearDown();
    }
    int Open(bool only_new) { return QVOpenLog(Name().c_str(), only_new, &log_); }
    // All records that have come, as "text"; "!N text" behind N missed ones, "* text" in a log made
    // anew.
    Texts News() {
        Texts texts;
        QVLogRecord record{};
        while (QVReadLog(log_, &record) == 1) {
            std::string text = record.missed > 0 ? "!" + std::to_string(record.missed) + " " : "";
            if (record.madeAnew != 0) text += "* ";
            texts.push_back(text + Narrow(UnicodeString(record.text, record.textLength)));
        }
        return texts;
    }

    QVLog* log_ = nullptr;
};

TEST_F(LogCalls, ALineIsTakenOrRefused) {
    Record(0x10000);
    const UnicodeString long_name = Widen(std::string(kMostLogSource, 's'));
    const UnicodeString long_text = Widen(std::string(kMostLogText, 't'));
    const UnicodeString longer = long_name + TEXT("s");
    const struct {
        int level, wanted;
        const WCHAR *source, *text;
    } rows[] = {{'X', 0, TEXT("a.b-c"), TEXT("one")},
                {' ', 0, long_name.t_str(), long_text.t_str()},
                {'>', ERROR_INVALID_PARAMETER, TEXT("a"), TEXT("t")},
                {'x', ERROR_INVALID_PARAMETER, TEXT("a"), TEXT("t")},
                {'i', ERROR_INVALID_PARAMETER, longer.t_str(), TEXT("t")},
                {'i', ERROR_INVALID_PARAMETER, TEXT(""), TEXT("t")},
                {'i', ERROR_INVALID_PARAMETER, TEXT("a,b"), TEXT("t")},
                {'i', ERROR_INVALID_PARAMETER, TEXT("a b"), TEXT("t")},
                {'i', ERROR_INVALID_PARAMETER, TEXT("[a"), TEXT("t")},
                {'i', ERROR_INVALID_PARAMETER, TEXT("a]"), TEXT("t")},
                {'i', ERROR_INVALID_PARAMETER, TEXT("a\x7f"), TEXT("t")},
                {'i', ERROR_INVALID_PARAMETER, nullptr, TEXT("t")},
                {'i', ERROR_INVALID_PARAMETER, TEXT("a"), nullptr}};
    for (const auto& row : rows)
        EXPECT_EQ(QVWriteLog(row.level, row.source, 7, row.text), row.wanted) << &row - rows;
    EXPECT_EQ(QVWriteLog('i', TEXT("a"), 7, (long_text + TEXT("t")).t_str()), 0);
    const std::string most(kMostLogText, 't');
    EXPECT_EQ(Read().texts, (Texts{"one", most, most + " ... (cut)"}));
    Close();
    CleanLogger::Logger().Release();
    EXPECT_EQ(QVWriteLog('i', TEXT("a"), 7, TEXT("t")), ERROR_NOT_READY) << "no unit";
    EXPECT_EQ(CleanLogger::Logger().recorder, nullptr);
}

TEST_F(LogCalls, RecordsComeOnceAndWhatIsLostIsCounted) {
    EXPECT_EQ(Open(true), ERROR_FILE_NOT_FOUND);
    Record(kLimit);
    Log("old");
    ASSERT_EQ(Open(true), 0);
    EXPECT_EQ(News(), Texts{});
    Log("new");
    EXPECT_EQ(News(), Texts{"new"});
    for (int i = 0; i < 100; ++i) Log(std::to_string(1000 + i));
    const Texts lap = News();
    ASSERT_LT(lap.size(), 100u);
    EXPECT_EQ(lap[0],
              "!" + std::to_string(100 - lap.size()) + " " + std::to_string(1100 - lap.size()));
    EXPECT_EQ(lap[1], std::to_string(1101 - lap.size()));
    Close();
    DeleteFileW(Name().c_str());
    EXPECT_EQ(News(), Texts{});
    Record(kLimit);
    Log("fresh");
    Log("second");
    EXPECT_EQ(News(), (Texts{"* fresh", "second"}));
    QVCloseLog(log_);
    ASSERT_EQ(Open(false), 0);
    EXPECT_EQ(News(), (Texts{"fresh", "second"}));
    Close();
    DeleteFileW(Name().c_str());
    Record(kLimit);
    Log("other");
    Log("header");
    EXPECT_EQ(News(), (Texts{"* other", "header"})) << "the header has the same bytes";
}

// Numbers count from the newest record, so that damage changes them.
TEST_F(LogCalls, WhatIsReadGoesOnBehindDamageAndFailures) {
    Record(kLimit);
    Log("first");
    Log("second");
    ASSERT_EQ(Open(false), 0);
    EXPECT_EQ(News(), (Texts{"first", "second"}));
    const DWORD third = Header().write_position;
    Log("third");
    Log("fourth");
    Close();
    LogImage image = Image();
    image[third + 4] ^= 0xFF;
    Replace(image);
    const HANDLE deleting =
        CreateFileW(Name().c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_EQ(News(), Texts{});
    QVLog* another = nullptr;
    EXPECT_EQ(QVOpenLog(Name().c_str(), 0, &another), ERROR_READ_FAULT);
    FileTest::Close(deleting);
    EXPECT_EQ(News(), Texts{"fourth"});
    image[7] ^= 0x40;  // the counter
    Replace(image);
    EXPECT_EQ(News(), Texts{});
    QVCloseLog(log_);
    image[image.size() - 8] ^= 0xFF;  // the tag of the newest text
    Replace(image);
    ASSERT_EQ(Open(true), 0);
    Record(kLimit);
    Log("new");
    const Texts news = News();
    EXPECT_EQ(news.size(), 3u) << "what was lost, that the log was mended, and the new one";
    EXPECT_EQ(news.back(), "new");
    Mox::TLogFollower follower;
    ASSERT_EQ(follower.Open(Name().c_str(), Mox::TLogFollower::TStart::Oldest), DWORD{NO_ERROR});
    Close();
    Replace({});
    EXPECT_EQ(follower.Open(Name().c_str(), Mox::TLogFollower::TStart::Oldest), DWORD{NO_ERROR});
    EXPECT_EQ(follower.Next(), nullptr) << "of the log before";
}

}  // namespace
