// Files as both hosts have them: opening, share modes, locks, data, positions.
#include "win32/file_fixture.h"

#include <minwinbase.h>

#include <thread>

using namespace test;

namespace {

constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE;

class Files : public FileTest {};

TEST_F(Files, DispositionsOverNothing) {
    const struct {
        DWORD disposition, error;
    } rows[] = {{CREATE_NEW, 0},
                {CREATE_ALWAYS, 0},
                {OPEN_EXISTING, 2},
                {OPEN_ALWAYS, 0},
                {TRUNCATE_EXISTING, 2}};
    for (const auto& row : rows) {
        const Wide name = Path(TEXT("new") + Decimal(row.disposition));
        const HANDLE file = Open(name, kBoth, 0, row.disposition);
        EXPECT_EQ(GetLastError(), row.error) << row.disposition;
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, row.error == 0) << row.disposition;
    }
}

TEST_F(Files, DispositionsOverAFile) {
    const struct {
        DWORD disposition, error;
        bool opens;
        DWORD size;
    } rows[] = {{CREATE_NEW, 80, false, 3},
                {CREATE_ALWAYS, 183, true, 0},
                {OPEN_EXISTING, 0, true, 3},
                {OPEN_ALWAYS, 183, true, 3},
                {TRUNCATE_EXISTING, 0, true, 0}};
    const Wide name = Path(TEXT("old"));
    for (const auto& row : rows) {
        MakeFile(name, "abc");
        const HANDLE file = Open(name, kBoth, 0, row.disposition);
        if (row.disposition != OPEN_EXISTING && row.disposition != TRUNCATE_EXISTING) {
            EXPECT_EQ(GetLastError(), row.error) << row.disposition;
        }
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, row.opens) << row.disposition;
        if (row.opens) {
            EXPECT_EQ(GetFileSize(file, nullptr), row.size) << row.disposition;
            Close(file);
        }
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
    EXPECT_EQ(OpenError(Path(TEXT("f")), kBoth, 0, 6), 87u);
    EXPECT_EQ(OpenError(Path(TEXT("f")), kBoth, 0, 0), 87u);
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
        const HANDLE second = Open(name, row.then_access, row.then_share, OPEN_EXISTING);
        EXPECT_EQ(second != INVALID_HANDLE_VALUE, row.opens) << &row - rows;
        if (row.opens) {
            Close(second);
        } else {
            EXPECT_EQ(GetLastError(), 32u);
        }
        Close(first);
    }
    EXPECT_NE(Open(name, kBoth, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE)
        << "a closed file holds on";
}

TEST_F(Files, ARefusedTruncationLeavesTheData) {
    const Wide name = Path(TEXT("kept"));
    MakeFile(name, "abc");
    const HANDLE reader = Open(name, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_EQ(OpenError(name, kBoth, kShareAll, CREATE_ALWAYS), 32u);
    EXPECT_EQ(Read(reader, 10), "abc");
    EXPECT_FALSE(DeleteFileW(name.c_str()));
    EXPECT_EQ(GetLastError(), 32u);
}

TEST_F(Files, DataEndsQuietlyAndAccessIsChecked) {
    const Wide name = Path(TEXT("data"));
    MakeFile(name, "hello world");
    const HANDLE reader = Open(name, GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_EQ(Read(reader, 5), "hello");
    EXPECT_EQ(Read(reader, 100), " world");
    EXPECT_EQ(Read(reader, 100), "");
    DWORD done = 7;
    EXPECT_FALSE(WriteFile(reader, "x", 1, &done, nullptr));
    EXPECT_EQ(GetLastError(), 5u);
    EXPECT_EQ(done, 0u);
    const HANDLE writer = Open(name, GENERIC_WRITE, kShareAll, OPEN_EXISTING);
    EXPECT_FALSE(ReadFile(writer, &done, 1, &done, nullptr));
    EXPECT_EQ(GetLastError(), 5u);
    EXPECT_FALSE(SetEndOfFile(reader));
    ExpectExceptOnWine(GetLastError() == 5, "SetEndOfFile without the right to write");
}

TEST_F(Files, PositionsMoveAndRefuseToBeNegative) {
    const HANDLE file = OpenShared(Path(TEXT("seek")));
    Write(file, "0123456789");
    EXPECT_EQ(SetFilePointer(file, 4, nullptr, FILE_BEGIN), 4u);
    EXPECT_EQ(SetFilePointer(file, -1, nullptr, FILE_CURRENT), 3u);
    EXPECT_EQ(Read(file, 2), "34");
    EXPECT_EQ(SetFilePointer(file, -2, nullptr, FILE_END), 8u);
    EXPECT_EQ(SetFilePointer(file, -9, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), 131u);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, 3), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), 87u);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), 8u) << "a failed seek moved";
    ASSERT_EQ(SetFilePointer(file, 3, nullptr, FILE_BEGIN), 3u);
    EXPECT_TRUE(SetEndOfFile(file));
    EXPECT_EQ(GetFileSize(file, nullptr), 3u);
    EXPECT_TRUE(FlushFileBuffers(file));
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
    at.Offset = 6;
    EXPECT_FALSE(ReadFile(file, text, 4, &done, &at));
    EXPECT_EQ(GetLastError(), 38u);
    EXPECT_EQ(done, 0u);
    EXPECT_EQ(GetFileSize(file, nullptr), 6u);
}

TEST_F(Files, PositionsBeyondFourGigabytes) {
    const HANDLE file = OpenShared(Path(TEXT("far")));
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(file, -1, &high, FILE_BEGIN), 0xFFFFFFFFu);
    EXPECT_EQ(GetLastError(), 0u) << "the low half of a good position";
    EXPECT_EQ(high, 1);
    SetLastError(kUntouched);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    ExpectExceptOnWine(GetLastError() == 87, "no room for the upper half");
    high = -1;
    EXPECT_EQ(SetFilePointer(file, -5, &high, FILE_BEGIN), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), 131u);
}

TEST_F(Files, LocksExcludeOtherHandlesAndOverlaps) {
    const Wide name = Path(TEXT("locks"));
    const HANDLE a = OpenShared(name), b = OpenShared(name);
    ASSERT_TRUE(LockFile(a, 0, 0, 96, 0));
    EXPECT_FALSE(LockFile(b, 95, 0, 1, 0));
    EXPECT_EQ(GetLastError(), 33u);
    EXPECT_FALSE(LockFile(a, 10, 0, 10, 0)) << "overlaps its own";
    EXPECT_EQ(GetLastError(), 33u);
    EXPECT_TRUE(LockFile(b, 96, 0, 10, 0));
    EXPECT_FALSE(UnlockFile(a, 0, 0, 95, 0)) << "not the range that was locked";
    ExpectExceptOnWine(GetLastError() == 158, "code of a range that is not locked");
    EXPECT_FALSE(UnlockFile(b, 0, 0, 96, 0));
    EXPECT_TRUE(UnlockFile(a, 0, 0, 96, 0));
    EXPECT_TRUE(LockFile(b, 0, 0, 96, 0));
    Close(b);
    EXPECT_TRUE(LockFile(a, 0, 0, 106, 0)) << "a closed handle holds on";
}

TEST_F(Files, ALockOfEverythingLeavesShareModesAlone) {
    const Wide name = Path(TEXT("all"));
    const HANDLE a = OpenShared(name);
    const HANDLE b = OpenShared(name);
    EXPECT_TRUE(LockFile(a, 0, 0, 0xFFFFFFFF, 0xFFFFFFFE));
    EXPECT_FALSE(LockFile(b, 5, 1, 1, 0));
    EXPECT_TRUE(UnlockFile(a, 0, 0, 0xFFFFFFFF, 0xFFFFFFFE));
    EXPECT_EQ(OpenError(name, kBoth, 0, OPEN_EXISTING), 32u);
}

TEST_F(Files, HandlesThatAreNotOpenAreRefused) {
    const HANDLE file = OpenShared(Path(TEXT("closed")));
    Close(file);
    const HANDLE handles[] = {file, nullptr, reinterpret_cast<HANDLE>(LONG_PTR{0x7FFFFFF0})};
    for (const HANDLE handle : handles) {
        DWORD done = 0;
        SetLastError(kUntouched);
        EXPECT_FALSE(ReadFile(handle, &done, 1, &done, nullptr));
        EXPECT_EQ(GetLastError(), 6u);
        EXPECT_FALSE(CloseHandle(handle));
        EXPECT_EQ(GetLastError(), 6u);
        EXPECT_EQ(SetFilePointer(handle, 0, nullptr, FILE_BEGIN), INVALID_SET_FILE_POINTER);
        EXPECT_FALSE(LockFile(handle, 0, 0, 1, 0));
        EXPECT_EQ(GetLastError(), 6u);
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
            SetFilePointer(file, 0, nullptr, FILE_BEGIN);
            ReadFile(file, digits, 3, &done, nullptr);
            const std::string next = std::to_string(1000 + std::atoi(digits) + 1).substr(1);
            SetFilePointer(file, 0, nullptr, FILE_BEGIN);
            WriteFile(file, next.data(), 3, &done, nullptr);
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
