// The logger, its messages and lines.
#include "mox_log/logger.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "mox_classes/text/sys_error.h"
#include "mox_classes/text/sysutils.h"
#include "mox_log/shared_memory.h"
#include "support/clean_logger.h"
#include "support/string_print.h"

using Mox::TLogMsg;
using test::CleanLogger;

namespace {

UnicodeString Plain(int level, const UnicodeString& text) {
    return CleanLogger::Logger().Log(level, TEXT("here"), 7, text, UnicodeString(), nullptr, 0);
}

// What a line begins with in this thread.
UnicodeString Lead() {
    return Sysutils::UnicodePrintf(TEXT("i T%lu.S%d [here,7] "), GetCurrentThreadId(),
                                   static_cast<int>(Mox::GetSessionId()));
}

UnicodeString Line(const UnicodeString& label, std::vector<BYTE> data, int size) {
    return Mox::ODSLog('i', TEXT("here"), 7, TEXT("text"), label,
                       data.empty() ? nullptr : data.data(), size);
}

TEST(Logger, UnitsConnectAndDisconnect) {
    const CleanLogger clean(0);
    Mox::TLogger& logger = clean.Logger();
    EXPECT_EQ(Mox::InitLogger(), 1);
    EXPECT_EQ(logger.processId, GetCurrentProcessId());
    EXPECT_EQ(logger.Init(), 2);
    EXPECT_EQ(logger.Release(), 1);
    EXPECT_NE(logger.lastError, nullptr);
    EXPECT_EQ(Mox::UninitLogger(), 0);
    EXPECT_EQ(logger.lastError, nullptr);
    EXPECT_EQ(logger.Release(), 0);
    EXPECT_EQ(logger.Init(), 1);
}

TEST(Logger, ErrorsWithoutAUnitAreLoggedAndForgotten) {
    const CleanLogger clean(0);
    EXPECT_EQ(Plain('i', TEXT("text")), Lead() + TEXT("text"));
    Plain('X', TEXT("lost"));
    EXPECT_EQ(clean.Logger().GetLastError(), UnicodeString());
    clean.Logger().Init();
    Plain('X', TEXT("kept"));
    Plain('*', TEXT("warning"));
    EXPECT_EQ(clean.Logger().GetLastError(), TEXT("kept"));
    // A reader's marker, as a fork can leave it.
    UnicodeString* marker = reinterpret_cast<UnicodeString*>(&clean.Logger());
    std::swap(clean.Logger().lastError, marker);
    EXPECT_EQ(clean.Logger().GetLastError(), UnicodeString());
    std::swap(clean.Logger().lastError, marker);
}

TEST(Logger, ALineShowsAtMostAHundredBytesOfABlock) {
    const UnicodeString text = Lead() + TEXT("text");
    EXPECT_EQ(Line(TEXT("label"), {1, 2}, 0), text);
    EXPECT_EQ(Line(TEXT("label"), {1, 2}, -2), text);
    EXPECT_EQ(Line(TEXT("label"), {}, 5), text + TEXT(" (+label 0bytes )"));
    EXPECT_EQ(Line(TEXT("label"), {0, 1, 2, 3, 4, 5, 6, 0xA7, 0xF8}, 9),
              text + TEXT(" (+label 9bytes 00010203040506A7 F8)"));
    EXPECT_TRUE(Mox::GetHexEncoded(nullptr, 9).IsEmpty());
    EXPECT_TRUE(Mox::GetHexEncoded("x", -1).IsEmpty());
    const std::vector<BYTE> zeros(150);
    const UnicodeString hundred = Mox::GetHexEncoded(zeros.data(), 100);
    EXPECT_EQ(hundred.Length(), 212);
    EXPECT_EQ(Line(UnicodeString(), zeros, 150),
              text + TEXT(" (+ 150bytes ") + hundred + TEXT(" ...)"));
}

TEST(Logger, SystemTextsKeepTheirLineBreak) {
    const UnicodeString text = Mox::GetSysError(ERROR_ACCESS_DENIED, false);
    EXPECT_GT(text.Pos(TEXT("\r\n")), 1);
    EXPECT_EQ(Mox::GetSysError(ERROR_ACCESS_DENIED, true), UnicodeString(TEXT("[5]")) + text);
    EXPECT_EQ(Mox::GetSysError(0x20001234, true), TEXT("[536875572]"));
}

// Keeps the last message, as a callback may.
void Keep(void* context, TLogMsg* message, Mox::TLogRecorder*, bool* owned) {
    auto& kept = *static_cast<TLogMsg**>(context);
    if (kept != nullptr) kept->Free();
    kept = message;
    *owned = false;
}

TEST(Logger, TheRecordCallbackGetsTheWholeMessageAndMayKeepIt) {
    const CleanLogger clean;
    TLogMsg* kept = nullptr;
    clean.Logger().recordContext = &kept;
    clean.Logger().recordProc = Keep;
    BYTE block[] = {1, 2, 3};
    clean.Logger().Log('i', TEXT("here"), 7, TEXT("text"), UnicodeString(), block, -1);
    EXPECT_EQ(kept->dataSize, 0) << "a negative size is no block";
    EXPECT_EQ(clean.Logger().Log('X', TEXT("here"), 7, TEXT("%s"), TEXT("label"), block, 3),
              TEXT("%s"));
    EXPECT_EQ(kept->data, block);
    EXPECT_EQ(kept->dataSize, -3);
    kept->ImportBinData();
    block[0] = 9;
    EXPECT_NE(kept->data, block);
    EXPECT_EQ(std::memcmp(kept->data, "\1\2\3", 3), 0);
    EXPECT_EQ(kept->ThreadId(), GetCurrentThreadId());
    EXPECT_EQ(kept->ProcessId(), GetCurrentProcessId());
    EXPECT_EQ(kept->level, 'X');
    EXPECT_EQ(kept->line, 7);
    EXPECT_EQ(kept->dataLabel, TEXT("label"));
    kept->Free();
    EXPECT_EQ(clean.Logger().GetLastError(), TEXT("%s"));
    // One that throws has the message freed, unless it has taken it.
    clean.Logger().recordProc = [](void*, TLogMsg*, Mox::TLogRecorder*, bool*) { throw 1; };
    EXPECT_THROW(Plain('i', TEXT("text")), int);
}

TEST(Logger, TheFormatCallbackMakesTheText) {
    const CleanLogger clean;
    clean.Logger().formatProc = [](void*, UnicodeString* text, TLogMsg* message, Mox::TLogRecorder*,
                                   bool*) { *text = message->text + message->source; };
    EXPECT_EQ(Plain('i', TEXT("text@")), TEXT("text@here"));
}

TEST(Logger, ThreadsConnectLogAndReadAtOnce) {
    const CleanLogger clean(0);
    const auto log = [] {
        CleanLogger::Logger().Init();
        CleanLogger::Logger().Lock();
        CleanLogger::Logger().Unlock();
        Plain('X', TEXT("an error"));
        CleanLogger::Logger().Release();
    };
    const auto read = [] {
        const UnicodeString text = CleanLogger::Logger().GetLastError();
        EXPECT_TRUE(text.Length() == 0 || text == TEXT("an error"));
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, log, read] {
            for (int i = 0; i < 100; ++i) t < 3 ? log() : read();
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(clean.Logger().refCount, 0);
    EXPECT_EQ(clean.Logger().lastError, nullptr);
}

TEST(LogMessage, RingsKeepTheirOrder) {
    TLogMsg* list = nullptr;
    EXPECT_EQ(Mox::Front(list), nullptr);
    EXPECT_EQ(Mox::PopFrontLogMsg(list), nullptr);
    TLogMsg* messages[3];
    for (TLogMsg*& message : messages) message = TLogMsg::Alloc();
    Mox::PushFrontLogMsg(list, messages[1]);
    Mox::PushBackLogMsg(list, messages[2]);
    Mox::PushFrontLogMsg(list, messages[0]);
    EXPECT_EQ(list, messages[2]);
    EXPECT_EQ(Mox::Front(list), messages[0]);
    TLogMsg* first = Mox::PopFrontLogMsg(list);
    EXPECT_EQ(first, messages[0]);
    EXPECT_EQ(first->next, first);
    first->Free();
    EXPECT_EQ(Mox::Front(list), messages[1]);
    Mox::FreeAllLogMsg(list);
    EXPECT_EQ(list, nullptr);
}

TEST(SharedMemory, ASecondMappingSeesTheSameBytes) {
    const UnicodeString name = Sysutils::UnicodePrintf(TEXT("QvTest%u"), GetCurrentProcessId());
    void *one = nullptr, *two = nullptr;
    DWORD code = 77;
    auto* first = static_cast<char*>(Mox::AllocSharedMemory(name, 100, one, &code, Mox::sdProcess));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(code, 0u);
    first[99] = 'q';
    UnicodeString whole_name;
    whole_name.printf(TEXT("%08X%s"), GetCurrentProcessId(), name);
    auto* second =
        static_cast<char*>(Mox::AllocSharedMemory(whole_name, 100, two, &code, Mox::sdShared));
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(code, DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(second[99], 'q');
    Mox::FreeSharedMemory(one, first);
    Mox::FreeSharedMemory(two, second);
    EXPECT_EQ(Mox::AllocSharedMemory(name, -1, one, &code, Mox::sdShared), nullptr);
    EXPECT_EQ(code, DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(one, nullptr);
}

}  // namespace
