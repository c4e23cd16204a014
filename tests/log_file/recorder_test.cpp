// Writing the log file: an honest ring.
#include <algorithm>
#include <map>
#include <thread>

#include "log_file/log_fixture.h"
#include "log_file/log_record.h"

using namespace test;

namespace {

class Recorder : public LogFileTest {};

// The writer's steps once more, in numbers only.
struct RingModel {
    explicit RingModel(DWORD limit_of_file) : limit(limit_of_file) {}

    void Append(DWORD record) {
        if (write + 4 + record > limit) {
            while (!slots.empty() && slots.front().at >= write) slots.erase(slots.begin());
            wrap = write;
            write = 96;
        }
        while (!slots.empty() && slots.front().at >= write &&
               slots.front().at - write < record + 4) {
            const bool tail_ends = slots.front().end == wrap;
            slots.erase(slots.begin());
            if (!tail_ends) continue;
            wrap = 0;
            break;
        }
        slots.push_back({write, write + 4 + record});
        write += 4 + record;
    }

    struct Slot {
        DWORD at, end;
    };
    DWORD limit, write = 96, wrap = 0;
    std::vector<Slot> slots;
};

TEST_F(Recorder, TheFirstRecordFollowsTheHeader) {
    Record(0x500000);
    EXPECT_EQ(Image().size(), 0u);
    Log("text");
    const Mox::TLogFileHeader header = Header();
    const DWORD record = 30 + 7 + 6;  // fixed part with tag and length, "tests", "text"
    EXPECT_EQ(Image().size(), 100 + record);
    EXPECT_EQ(header.version, 1u);
    EXPECT_EQ(std::uint64_t{header.counter}, 1u);
    EXPECT_EQ(header.count, 1u);
    EXPECT_EQ(header.limit, 0x500000u);
    EXPECT_EQ(header.write_position, 100 + record);
    EXPECT_EQ(header.oldest, 96u);
    EXPECT_EQ(header.wrap, 0u);
    EXPECT_EQ(Image()[96], 100 + record);
    EXPECT_EQ(Image()[100], 0x61);
    EXPECT_EQ(Read().texts, Texts{"text"});
}

TEST_F(Recorder, TheRingMovesAsItsRulesSay) {
    unsigned seed = 7;
    for (const DWORD limit : {400u, 517u, 1000u}) {
        const LogImage nothing;
        Replace(nothing);
        Record(limit);
        RingModel model(limit);
        Texts all;
        for (int i = 0; i < 150; ++i) {
            seed = seed * 1103515245u + 12345u;
            const std::string text(1 + (seed >> 16) % 120, static_cast<char>('a' + i % 26));
            Log(text);
            all.push_back(text);
            model.Append(static_cast<DWORD>(30 + 7 + 2 + text.size()));
            const Mox::TLogFileHeader header = Header();
            ASSERT_EQ(header.write_position, model.write) << i;
            ASSERT_EQ(header.count, model.slots.size()) << i;
            ASSERT_EQ(header.oldest, model.slots.front().at) << i;
            ASSERT_EQ(header.wrap, model.wrap) << i;
            ASSERT_EQ(header.limit, limit);
            const ReadBack read = Read();
            ASSERT_EQ(read.texts, Texts(all.end() - header.count, all.end())) << i;
            ASSERT_TRUE(read.skips.empty()) << read.skips.front();
        }
        EXPECT_LE(Image().size(), limit);
        Close();
    }
}

// Four slots fill the ring exactly; the next record does not fit behind the write position, where
// the oldest slot begins.
TEST_F(Recorder, AFullRingWrapsOverItsTail) {
    const std::string text(20, 'x');
    const DWORD slot = 4 + 30 + 7 + 2 + 20;
    Record(96 + 4 * slot);
    for (int i = 0; i < 7; ++i) Log(text);
    ASSERT_EQ(Header().write_position, Header().oldest);
    ASSERT_EQ(Header().count, 4u);
    Log(std::string(20 + slot, 'y'));
    const ReadBack read = Read();
    EXPECT_EQ(read.texts, (Texts{text, std::string(20 + slot, 'y')}));
    EXPECT_TRUE(read.skips.empty());
}

TEST_F(Recorder, ARecordLargerThanTheRingIsCut) {
    Record(400);
    const std::vector<BYTE> block(1000, 0xAA);
    Log("text", TEXT("label"), block);
    Log(std::string(50, 'd'));
    Log(std::string(5000, 't'), TEXT("label"), block);
    Mox::TLogReader reader;
    ASSERT_TRUE(reader.Open(Name().c_str()));
    const Mox::TLogMsg* message = reader.Next();
    ASSERT_NE(message, nullptr);
    const std::string text = Narrow(message->text);
    EXPECT_EQ(text.substr(text.size() - 7), "t [cut]");
    EXPECT_EQ(message->dataLabel, UnicodeString(TEXT("label [cut]")));
    EXPECT_EQ(message->dataSize, 0);
    EXPECT_EQ(reader.Next(), nullptr);
    EXPECT_LE(Image().size(), 400u);
}

TEST_F(Recorder, ABlockIsCutBeforeTheText) {
    Record(400);
    Log("text", TEXT("label"), std::vector<BYTE>(1000, 0xAA));
    Mox::TLogReader reader;
    ASSERT_TRUE(reader.Open(Name().c_str()));
    const Mox::TLogMsg* message = reader.Next();
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->text, UnicodeString(TEXT("text")));
    EXPECT_EQ(message->dataLabel, UnicodeString(TEXT("label [cut]")));
    EXPECT_GT(message->dataSize, 200);
}

TEST_F(Recorder, ARingTooSmallForAnythingStaysEmpty) {
    Record(120);
    Log("text");
    EXPECT_LE(Image().size(), 120u);
    EXPECT_EQ(std::uint64_t{Header().counter}, 0u);
}

TEST_F(Recorder, AFileThatDoesNotOpenBlocksNobody) {
    Mox::TLogRecorder recorder;
    EXPECT_FALSE(recorder.Open((Folder() + TEXT("\\no\\such.log")).c_str(), 1000));
    EXPECT_FALSE(recorder.IsOpen());
    Mox::SetLogRecorder(&recorder);
    Log("dropped");
    Mox::ClearLogRecorder(&recorder);
}

TEST_F(Recorder, WhoIsTakenOutWaitsForNobodyForLong) {
    Record(0x1000);
    Log("before");
    const HANDLE other = OpenShared(Name());
    ASSERT_TRUE(LockFile(other, 0, 0, 96, 0));
    std::thread waiting([] { Log("dropped"); });
    Sleep(50);
    Close();
    waiting.join();
    ASSERT_TRUE(UnlockFile(other, 0, 0, 96, 0));
    FileTest::Close(other);
    Record(0x1000);
    Log("after");
    EXPECT_EQ(Read().texts, (Texts{"before", "after"}));
}

struct Chained {
    Texts texts;
    int left = 0;
};

// Logs again while it is told of a message.
void LogOnce(void* context, Mox::TLogMsg* message, Mox::TLogRecorder*, bool*) {
    auto& chained = *static_cast<Chained*>(context);
    chained.texts.push_back(Narrow(message->text));
    if (chained.left-- <= 0) return;
    BYTE block[] = {1, 2, 3};
    CleanLogger::Logger().Log('i', TEXT("tests"), 1, message->text + TEXT("+"), TEXT("label"),
                              block, 3);
    block[0] = 9;
}

class ChainedRecorder : public LogFileTest, public testing::WithParamInterface<bool> {};

TEST_P(ChainedRecorder, WhatIsLoggedMeanwhileIsWrittenAfterwards) {
    Mox::TLogger& logger = CleanLogger::Logger();
    const DWORD slot = logger.tlsIndex;
    if (!GetParam()) logger.tlsIndex = TLS_OUT_OF_INDEXES;
    Chained chained;
    chained.left = 2;
    logger.recordContext = &chained;
    logger.recordProc = LogOnce;
    Record(0x10000);
    Log("a");
    Log("b");
    logger.tlsIndex = slot;
    EXPECT_EQ(chained.texts, (Texts{"a", "a+", "a++", "b"}));
    EXPECT_EQ(Read().texts, chained.texts);
    Mox::TLogReader reader;
    reader.Open(Name().c_str());
    reader.Next();
    const Mox::TLogMsg* queued = reader.Next();
    ASSERT_EQ(queued->dataSize, 3);
    EXPECT_EQ(std::memcmp(queued->data, "\1\2\3", 3), 0);
    Close();
    EXPECT_EQ(logger.recordProc, &LogOnce);
    logger.recordProc = nullptr;
}

INSTANTIATE_TEST_SUITE_P(SlotOrNone, ChainedRecorder, testing::Bool());

TEST_F(Recorder, ThreadsKeepTheirOrder) {
    Record(0x100000);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 50; ++i) Log(std::to_string(t) + ":" + std::to_string(i));
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::map<std::string, int> next;
    const Texts texts = Read().texts;
    ASSERT_EQ(texts.size(), 200u);
    for (const std::string& text : texts) {
        EXPECT_EQ(text.substr(2), std::to_string(next[text.substr(0, 1)]++));
    }
}

TEST_F(Recorder, ARecorderIsReplacedWhileThreadsLog) {
    Record(0x100000);
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 60; ++i) Log("text");
        });
    }
    for (int i = 0; i < 20; ++i) {
        auto fresh = std::make_unique<Mox::TLogRecorder>();
        ASSERT_TRUE(fresh->Open(Name().c_str(), 0x100000));
        std::unique_ptr<Mox::TLogRecorder> old(i == 0 ? nullptr : CleanLogger::Logger().recorder);
        Mox::SetLogRecorder(fresh.release());
    }
    for (std::thread& thread : threads) thread.join();
    const std::unique_ptr<Mox::TLogRecorder> last(CleanLogger::Logger().recorder);
    Mox::ClearLogRecorder(last.get());
    EXPECT_EQ(Read().texts.size(), 180u);
}

TEST_F(Recorder, ReportsIgnoreATextThatAsksForOtherArguments) {
    CleanLogger::Logger().resStringProc = [](void*, UnicodeString, DWORD, UnicodeString* result) {
        *result = TEXT("%n %s %s %s %s");
    };
    BYTE bad[] = {0xF1, 1, 'x'};
    void* cursor = bad;
    EXPECT_TRUE(Mox::ReadUnicodeString(&cursor).IsEmpty());
    EXPECT_EQ(cursor, bad + 1);
}

}  // namespace
