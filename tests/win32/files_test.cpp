// Files as both hosts have them: opening, share modes, locks, data, positions.
#include "win32/file_fixture.h"

#include <minwinbase.h>

#include <thread>

using namespace test;

namespace {

constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

class Files : public FileTest {};

TEST_F(Files, DispositionsOverNothingAndOverAFile) {
    const struct {
        DWORD disposition, over_nothing, over_a_file, size;
        bool opens;
    } rows[] = {{CREATE_NEW, 0, 80, 3, false},
                {CREATE_ALWAYS, 0, 183, 0, true},
                {OPEN_EXISTING, 2, 0, 3, true},
                {OPEN_ALWAYS, 0, 183, 3, true},
                {TRUNCATE_EXISTING, 2, 0, 0, true},
                {0, 87, 87, 3, false},
                {TRUNCATE_EXISTING + 1, 87, 87, 3, false}};
    const Wide old = Path(TEXT("old"));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.disposition);
        Open(Path(TEXT("new") + Decimal(row.disposition)), kBoth, 0, row.disposition);
        EXPECT_EQ(GetLastError(), row.over_nothing);
        MakeFile(old, "abc");
        const HANDLE file = Open(old, kBoth, 0, row.disposition);
        if (row.over_a_file != 0) {
            EXPECT_EQ(GetLastError(), row.over_a_file);
        }
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, row.opens);
        if (row.opens) Close(file);
        EXPECT_EQ(GetFileSize(Open(old, GENERIC_READ, kShareAll, OPEN_EXISTING), nullptr),
                  row.size);
        CloseAll();
    }
}

TEST_F(Files, NamesThatCannotBeOpened) {
    const struct {
        Wide name;
        DWORD error;
    } rows[] = {
        {Folder() + TEXT("\\none"), 2},
        {Folder() + TEXT("\\none\\x"), 3},
        {Folder(), 5},
        {Folder() + TEXT("\\a?b"), 123},
        {Folder() + TEXT("\\a|b"), 123},
        {Folder() + TEXT("\\a<b\\c"), 123},
        {Wide(), 3},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(OpenError(row.name, GENERIC_READ, kShareAll, OPEN_EXISTING), row.error)
            << &row - rows;
    }
    ExpectExceptOnWine(OpenError(TEXT("Q:\\x"), GENERIC_READ, kShareAll, OPEN_EXISTING) == 3,
                       "a drive that is not there");
    EXPECT_EQ(OpenError(Folder(), kBoth, 0, CREATE_NEW), 80u);
}

TEST_F(Files, ShareModesHoldBetweenHandles) {
    const struct {
        DWORD access, share, then_access, then_share;
        bool opens;
    } rows[] = {
        {kBoth, kShareAll, kBoth, kShareAll, true},
        {kBoth, 0, GENERIC_READ, kShareAll, false},
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, true},
        {GENERIC_READ, FILE_SHARE_READ, GENERIC_WRITE, kShareAll, false},
        {GENERIC_WRITE, kShareAll, GENERIC_READ, FILE_SHARE_READ, false},
        {GENERIC_READ, kShareAll, GENERIC_READ, FILE_SHARE_WRITE, false},
        {GENERIC_READ, FILE_SHARE_WRITE, GENERIC_WRITE, FILE_SHARE_READ, true},
        {kBoth, 0, 0, kShareAll, true},
    };
    const Wide name = Path(TEXT("shared"));
    MakeFile(name, "abc");
    for (const auto& row : rows) {
        const HANDLE first = Open(name, row.access, row.share, OPEN_EXISTING);
        ASSERT_NE(first, INVALID_HANDLE_VALUE);
        EXPECT_EQ(OpenError(name, row.then_access, row.then_share, OPEN_EXISTING),
                  row.opens ? 0u : 32u)
            << &row - rows;
        CloseAll();
    }
    const HANDLE reader = Open(name, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_EQ(OpenError(name, kBoth, kShareAll, CREATE_ALWAYS), 32u);
    EXPECT_EQ(Read(reader, 10), "abc") << "a refused truncation leaves the data";
    EXPECT_EQ(ErrorUnless(DeleteFileW(name.c_str())), 32u);
}

TEST_F(Files, DataEndsQuietlyAndAccessIsChecked) {
    const Wide name = Path(TEXT("data"));
    MakeFile(name, "hello world");
    const HANDLE reader = Open(name, GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_EQ(Read(reader, 5), "hello");
    EXPECT_EQ(Read(reader, 100), " world");
    EXPECT_EQ(Read(reader, 100), "");
    DWORD done = 7;
    EXPECT_EQ(ErrorUnless(WriteFile(reader, "x", 1, &done, nullptr)), 5u);
    EXPECT_EQ(done, 0u);
    const HANDLE writer = Open(name, GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    EXPECT_EQ(ErrorUnless(ReadFile(writer, &done, 1, &done, nullptr)), 5u);
    ExpectExceptOnWine(ErrorUnless(SetEndOfFile(reader)) == 5, "SetEndOfFile needs the right");
}

TEST_F(Files, PositionsMoveAndRefuseToBeNegative) {
    const HANDLE file = OpenShared(Path(TEXT("seek")));
    Write(file, "0123456789");
    const auto seek = [file](LONG distance, LONG* high, DWORD from) {
        SetLastError(NO_ERROR);
        return SetFilePointer(file, distance, high, from);
    };
    EXPECT_EQ(seek(4, nullptr, FILE_BEGIN), 4u);
    EXPECT_EQ(seek(-1, nullptr, FILE_CURRENT), 3u);
    EXPECT_EQ(Read(file, 2), "34");
    EXPECT_EQ(seek(-2, nullptr, FILE_END), 8u);
    EXPECT_EQ(ErrorUnless(seek(-9, nullptr, FILE_CURRENT) != ~0u), 131u);
    EXPECT_EQ(ErrorUnless(seek(0, nullptr, 3) != ~0u), 87u);
    EXPECT_EQ(seek(0, nullptr, FILE_CURRENT), 8u) << "a failed seek moved";
    EXPECT_EQ(seek(3, nullptr, FILE_BEGIN), 3u);
    EXPECT_TRUE(SetEndOfFile(file));
    EXPECT_EQ(GetFileSize(file, nullptr), 3u);
    LONG high = 1;
    EXPECT_EQ(seek(-1, &high, FILE_BEGIN), 0xFFFFFFFFu);
    EXPECT_EQ(GetLastError(), 0u) << "the low half of a good position";
    EXPECT_EQ(high, 1);
    ExpectExceptOnWine(ErrorUnless(seek(0, nullptr, FILE_CURRENT) != ~0u) == 87,
                       "no room for the upper half");
    high = -1;
    EXPECT_EQ(ErrorUnless(seek(-5, &high, FILE_BEGIN) != ~0u), 131u);
    high = 1;
    EXPECT_EQ(seek(2, &high, FILE_BEGIN), 2u);
    EXPECT_TRUE(SetEndOfFile(file));
    DWORD upper = 0;
    EXPECT_EQ(GetFileSize(file, &upper), 2u);
    EXPECT_EQ(upper, 1u);
}

TEST_F(Files, TransfersAtOffsetsOfTheirOwn) {
    const HANDLE file = OpenShared(Path(TEXT("offsets")));
    OVERLAPPED at{};
    DWORD done = 0;
    at.Offset = 2;
    EXPECT_TRUE(WriteFile(file, "cdef", 4, &done, &at));
    EXPECT_EQ(done, 4u);
    char text[4] = {};
    at.Offset = 4;
    EXPECT_TRUE(ReadFile(file, text, 4, &done, &at)) << "what there is up to the end";
    EXPECT_EQ(std::string(text, done), "ef");
    for (const DWORD high : {0u, 1u}) {
        at.Offset = 6 * (1 - high);
        at.OffsetHigh = high;
        EXPECT_EQ(ErrorUnless(ReadFile(file, text, 4, &done, &at)), 38u);
        EXPECT_EQ(done, 0u);
    }
    EXPECT_EQ(GetFileSize(file, nullptr), 6u);
}

TEST_F(Files, LocksExcludeOtherHandlesAndOverlaps) {
    const Wide name = Path(TEXT("locks"));
    const HANDLE a = OpenShared(name), b = OpenShared(name);
    ASSERT_TRUE(LockFile(a, 0, 0, 96, 0));
    EXPECT_EQ(ErrorUnless(LockFile(b, 95, 0, 1, 0)), 33u);
    EXPECT_EQ(ErrorUnless(LockFile(a, 10, 0, 10, 0)), 33u) << "overlaps its own";
    EXPECT_TRUE(LockFile(b, 96, 0, 10, 0));
    ExpectExceptOnWine(ErrorUnless(UnlockFile(a, 0, 0, 95, 0)) == 158, "not the locked range");
    EXPECT_FALSE(UnlockFile(b, 0, 0, 96, 0));
    EXPECT_TRUE(UnlockFile(a, 0, 0, 96, 0));
    EXPECT_TRUE(LockFile(b, 0, 0, 96, 0));
    Close(b);
    EXPECT_TRUE(LockFile(a, 0, 0, 106, 0)) << "a closed handle holds on";
    EXPECT_TRUE(UnlockFile(a, 0, 0, 106, 0));
    EXPECT_TRUE(LockFile(a, 0, 0, 0xFFFFFFFF, 0xFFFFFFFE));
    const HANDLE c = OpenShared(name);
    EXPECT_EQ(ErrorUnless(LockFile(c, 5, 1, 1, 0)), 33u) << "everything is locked";
    EXPECT_EQ(OpenError(name, kBoth, 0, OPEN_EXISTING), 32u);
}

TEST_F(Files, HandlesThatAreNotOpenAreRefused) {
    const HANDLE file = OpenShared(Path(TEXT("closed")));
    Close(file);
    const HANDLE handles[] = {file, nullptr, reinterpret_cast<HANDLE>(LONG_PTR{0x7FFFFFF0})};
    for (const HANDLE handle : handles) {
        DWORD done = 0;
        EXPECT_EQ(ErrorUnless(ReadFile(handle, &done, 1, &done, nullptr)), 6u);
        EXPECT_EQ(ErrorUnless(CloseHandle(handle)), 6u);
        EXPECT_EQ(SetFilePointer(handle, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
        EXPECT_EQ(ErrorUnless(LockFile(handle, 0, 0, 1, 0)), 6u);
    }
    EXPECT_NE(OpenShared(Path(TEXT("next"))), INVALID_HANDLE_VALUE);
}

// One thread at a time is inside a lock, whatever handle it came through.
TEST_F(Files, LocksSerialiseThreads) {
    const Wide name = Path(TEXT("count"));
    MakeFile(name, "000");
    const auto count_up = [&] {
        const HANDLE file =
            CreateFileW(name.c_str(), kBoth, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
        for (int i = 0; i < 100; ++i) {
            while (!LockFile(file, 0, 0, 3, 0)) std::this_thread::yield();
            char digits[4] = {};
            DWORD done = 0;
            OVERLAPPED at{};
            ReadFile(file, digits, 3, &done, &at);
            const std::string next = std::to_string(1000 + std::atoi(digits) + 1).substr(1);
            WriteFile(file, next.data(), 3, &done, &at);
            UnlockFile(file, 0, 0, 3, 0);
        }
        CloseHandle(file);
    };
    std::thread other(count_up);
    count_up();
    other.join();
    EXPECT_EQ(Read(OpenShared(name), 3), "200");
}

}  // namespace
