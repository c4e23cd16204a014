// Memory, threads, time, messages, environment, comparison: what holds on both hosts.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "support/fresh_host_root.h"

namespace {

using Wide = std::basic_string<WCHAR>;

std::string SystemText(DWORD code) {
    WCHAR* text = nullptr;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code,
                       0x400, reinterpret_cast<LPWSTR>(&text), 0, nullptr);
    std::string narrow(text, text + length);
    LocalFree(text);
    return narrow;
}

Wide Expanded(const WCHAR* text) {
    WCHAR buffer[200] = {};
    const DWORD size = ExpandEnvironmentStringsW(text, buffer, 200);
    EXPECT_EQ(size, Wide(buffer).size() + 1);
    EXPECT_EQ(ExpandEnvironmentStringsW(text, nullptr, 0), size);
    return buffer;
}

int Order(const WCHAR* a, const WCHAR* b, DWORD flags = 0) {
    return CompareStringW(LOCALE_USER_DEFAULT, flags, a, -1, b, -1) - CSTR_EQUAL;
}

}  // namespace

TEST(Heap, BlocksKeepTheirBytes) {
    const HANDLE heap = GetProcessHeap();
    auto* block = static_cast<char*>(HeapAlloc(heap, HEAP_ZERO_MEMORY, 100));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::count(block, block + 100, '\0'), 100);
    std::memcpy(block, "kept", 5);
    block = static_cast<char*>(HeapReAlloc(heap, 0, block, 100000));
    ASSERT_NE(block, nullptr);
    EXPECT_STREQ(block, "kept");
    EXPECT_EQ(HeapReAlloc(heap, 0, block, ~SIZE_T{0} - 64), nullptr);
    EXPECT_STREQ(block, "kept");
    block = static_cast<char*>(HeapReAlloc(heap, 0, block, 0));
    EXPECT_NE(block, nullptr);
    EXPECT_TRUE(HeapFree(heap, 0, block));
    EXPECT_TRUE(HeapFree(heap, 0, nullptr));
    EXPECT_EQ(GlobalFree(GlobalAlloc(GPTR, 10)), nullptr);
}

TEST(Threads, SlotsHoldAValuePerThreadAndStartEmpty) {
    DWORD slot = TlsAlloc();
    ASSERT_NE(slot, TLS_OUT_OF_INDEXES);
    int mine = 0, other = 0;
    EXPECT_TRUE(TlsSetValue(slot, &mine));
    std::thread([&] {
        EXPECT_EQ(TlsGetValue(slot), nullptr);
        TlsSetValue(slot, &other);
        EXPECT_EQ(TlsGetValue(slot), &other);
    }).join();
    EXPECT_EQ(TlsGetValue(slot), &mine);
    EXPECT_TRUE(TlsFree(slot));
    EXPECT_FALSE(TlsFree(slot));
    slot = TlsAlloc();
    EXPECT_EQ(TlsGetValue(slot), nullptr);
    TlsFree(slot);
    EXPECT_FALSE(TlsSetValue(100000, &mine));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST(Threads, CriticalSectionIsRecursiveAndExcludes) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    int total = 0;
    const auto count = [&] {
        for (int i = 0; i < 1000; ++i) {
            EnterCriticalSection(&section);
            EnterCriticalSection(&section);
            ++total;
            LeaveCriticalSection(&section);
            LeaveCriticalSection(&section);
        }
    };
    std::thread first(count), second(count);
    first.join();
    second.join();
    EXPECT_EQ(total, 2000);
    DeleteCriticalSection(&section);
}

TEST(Threads, Ids) {
    std::atomic<DWORD> other = 0;
    std::thread([&] { other = GetCurrentThreadId(); }).join();
    EXPECT_NE(GetCurrentThreadId(), other);
    DWORD session = 0xBEEF;
    EXPECT_TRUE(ProcessIdToSessionId(GetCurrentProcessId(), &session));
    EXPECT_NE(session, 0xBEEFu);
    EXPECT_FALSE(ProcessIdToSessionId(0x7FFFFFFC, &session));
}

TEST(Time, CalendarOfFileTimes) {
    const ULONGLONG units = 133536384005670000;  // 2024-02-29 00:00:00.567
    const FILETIME time = {static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
    SYSTEMTIME parts;
    ASSERT_TRUE(FileTimeToSystemTime(&time, &parts));
    EXPECT_EQ(parts.wYear * 10000 + parts.wMonth * 100 + parts.wDay, 20240229);
    EXPECT_EQ(parts.wDayOfWeek, 4);
    EXPECT_EQ(parts.wHour * 10000 + parts.wMinute * 100 + parts.wSecond, 0);
    EXPECT_EQ(parts.wMilliseconds, 567);
    const FILETIME beyond = {0, 0x80000000};
    EXPECT_FALSE(FileTimeToSystemTime(&beyond, &parts));
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    ASSERT_TRUE(FileTimeToSystemTime(&now, &parts));
    EXPECT_GE(parts.wYear, 2024);
    LARGE_INTEGER before, after;
    QueryPerformanceCounter(&before);
    Sleep(20);
    QueryPerformanceCounter(&after);
    EXPECT_GE(after.QuadPart - before.QuadPart, 150000);
}

TEST(Messages, SystemTextsEndInALineBreak) {
    EXPECT_TRUE(SystemText(ERROR_ACCESS_DENIED).ends_with("\r\n"));
    EXPECT_EQ(SystemText(0x80070005), SystemText(ERROR_ACCESS_DENIED));
    EXPECT_EQ(SystemText(0x2FFF1234), "");
    EXPECT_EQ(GetLastError(), 317u);
    WCHAR small[5];
    EXPECT_EQ(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 5, 0, small, 5, nullptr), 0u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
}

TEST(Environment, NamesWithoutCaseAndSystemFolders) {
    ASSERT_TRUE(SetEnvironmentVariableW(TEXT("Qv_Test_Name"), TEXT("v\u00e4lue")));
    EXPECT_EQ(Expanded(TEXT("%QV_TEST_NAME%")), TEXT("v\u00e4lue"));
    ASSERT_TRUE(SetEnvironmentVariableW(TEXT("QV_TEST_NAME"), nullptr));
    EXPECT_EQ(Expanded(TEXT("%Qv_Test_Name%")), TEXT("%Qv_Test_Name%"));
    EXPECT_EQ(Order(Expanded(TEXT("%SystemRoot%")).c_str(), TEXT("C:\\windows"), NORM_IGNORECASE),
              0);
    const test::FreshHostRoot root;
    WCHAR folder[MAX_PATH];
    const DWORD length = GetTempPathW(MAX_PATH, folder);
    ASSERT_GT(length, 1u);
    EXPECT_EQ(folder[length - 1], TEXT('\\'));
    EXPECT_EQ(GetTempPathW(0, nullptr), length + 1);
    EXPECT_EQ(GetFileAttributesW(folder) & 0x80000010, 0x10u);
    EXPECT_EQ(GetSystemDirectoryW(nullptr, 0), GetSystemDirectoryW(folder, MAX_PATH) + 1);
    OSVERSIONINFOW version{};
    EXPECT_FALSE(GetVersionExW(&version));
    version.dwOSVersionInfoSize = sizeof version;
    EXPECT_TRUE(GetVersionExW(&version));
    EXPECT_EQ(version.dwPlatformId, 2u);
    EXPECT_GE(version.dwMajorVersion, 6u);
    EXPECT_GE(version.dwBuildNumber, 7600u);
}

TEST(CompareTexts, AlphabetThenAccentThenCase) {
    const WCHAR* const ascending[] = {
        TEXT(""),       TEXT("_"),   TEXT("1"), TEXT("a"),      TEXT("A"),
        TEXT("\u00e4"), TEXT("ab"),  TEXT("b"), TEXT("co"),     TEXT("coop"),
        TEXT("co-op"),  TEXT("cop"), TEXT("Z"), TEXT("\u03b1"), TEXT("\u0434"),
    };
    for (std::size_t i = 0; i < std::size(ascending); ++i) {
        for (std::size_t j = 0; j < std::size(ascending); ++j) {
            EXPECT_EQ(Order(ascending[i], ascending[j]), int{i > j} - int{i < j}) << i << " " << j;
        }
    }
    EXPECT_EQ(Order(TEXT("aB\u00c4"), TEXT("Ab\u00e4"), NORM_IGNORECASE), 0);
    EXPECT_EQ(CompareStringW(LOCALE_USER_DEFAULT, 0, TEXT("abc"), 2, TEXT("abd"), 2), CSTR_EQUAL);
    EXPECT_EQ(CompareStringW(LOCALE_USER_DEFAULT, 0, nullptr, 0, TEXT("a"), 1), 0);
}
