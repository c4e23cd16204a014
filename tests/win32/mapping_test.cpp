// File mappings as both hosts have them.
#include <cstring>

#include "win32/file_fixture.h"

using namespace test;

namespace {

class Mappings : public FileTest {
  protected:
    static HANDLE Create(const WCHAR* name, DWORD size, DWORD protect = PAGE_READWRITE) {
        SetLastError(kUntouched);
        return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, protect, 0, size, name);
    }
    static char* View(HANDLE mapping, SIZE_T bytes, DWORD access = FILE_MAP_ALL_ACCESS) {
        return static_cast<char*>(MapViewOfFile(mapping, access, 0, 0, bytes));
    }
};

TEST_F(Mappings, ANameIsOneBlockUntilItsLastHandleCloses) {
    const HANDLE first = Create(TEXT("qv test/block"), 100);
    EXPECT_EQ(GetLastError(), 0u);
    const HANDLE second = Create(TEXT("Local\\qv test/block"), 50);
    EXPECT_EQ(GetLastError(), 183u);
    char* const a = View(first, 100);
    char* const b = View(second, 50);
    ASSERT_TRUE(a != nullptr && b != nullptr && a != b);
    std::strcpy(a, "shared");
    EXPECT_STREQ(b, "shared");
    EXPECT_TRUE(CloseHandle(first) && UnmapViewOfFile(a));
    const HANDLE third = Create(TEXT("qv test/block"), 100);
    EXPECT_EQ(GetLastError(), 183u);
    EXPECT_TRUE(CloseHandle(third) && CloseHandle(second));
    const HANDLE fresh = Create(TEXT("qv test/block"), 100);
    EXPECT_EQ(GetLastError(), 0u) << "a view alone keeps the memory, not the name";
    EXPECT_STREQ(b, "shared");
    char* const c = View(fresh, 0);
    EXPECT_EQ(c[0], 0) << "a new block is zeros";
    EXPECT_TRUE(UnmapViewOfFile(b) && UnmapViewOfFile(c) && CloseHandle(fresh));
}

TEST_F(Mappings, NamesAreToldApart) {
    const HANDLE a = Create(TEXT("qv_name"), 10);
    const HANDLE b = Create(TEXT("qv_Name"), 10);
    EXPECT_EQ(GetLastError(), 0u);
    const HANDLE c = Create(nullptr, 10), d = Create(nullptr, 10);
    EXPECT_EQ(GetLastError(), 0u);
    for (const HANDLE mapping : {a, b, c, d}) EXPECT_TRUE(CloseHandle(mapping));
}

TEST_F(Mappings, WhatCannotBeMappedIsRefused) {
    EXPECT_EQ(Create(TEXT("qv_none"), 0), nullptr);
    EXPECT_EQ(GetLastError(), 87u);
    EXPECT_EQ(Create(nullptr, 10, 0x1234), nullptr);
    EXPECT_EQ(GetLastError(), 87u);
    const HANDLE mapping = Create(nullptr, 5000, PAGE_READONLY);
    EXPECT_EQ(View(mapping, 0), nullptr) << "read-only";
    EXPECT_EQ(GetLastError(), 5u);
    EXPECT_EQ(View(mapping, 8193, FILE_MAP_READ), nullptr);
    EXPECT_EQ(GetLastError(), 5u);
    EXPECT_EQ(MapViewOfFile(mapping, FILE_MAP_READ, 0, 4096, 1), nullptr);
    EXPECT_EQ(GetLastError(), 1132u);
    char* const view = View(mapping, 0, FILE_MAP_READ);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view[4999], 0);
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_FALSE(UnmapViewOfFile(view));
    EXPECT_EQ(GetLastError(), 487u);
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_EQ(View(mapping, 0, FILE_MAP_READ), nullptr);
    EXPECT_EQ(GetLastError(), 6u);
    EXPECT_EQ(View(OpenShared(Path(TEXT("file"))), 0, FILE_MAP_READ), nullptr) << "no mapping";
    EXPECT_EQ(GetLastError(), 6u);
}

TEST_F(Mappings, FilesAreMappedAndGrow) {
    const Wide name = Path(TEXT("mapped"));
    const HANDLE file = OpenShared(name);
    EXPECT_EQ(CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), 1006u) << "an empty file";
    Write(file, "abc");
    const HANDLE mapping = CreateFileMappingW(file, nullptr, PAGE_READWRITE, 0, 10, nullptr);
    ASSERT_NE(mapping, nullptr);
    char* const view = View(mapping, 0);
    ASSERT_NE(view, nullptr);
    EXPECT_STREQ(view, "abc");
    view[9] = 'z';
    EXPECT_TRUE(UnmapViewOfFile(view) && CloseHandle(mapping));
    EXPECT_EQ(GetFileSize(file, nullptr), 10u);
    SetFilePointer(file, 9, nullptr, FILE_BEGIN);
    EXPECT_EQ(Read(file, 5), "z");
    Close(file);
    const HANDLE reader = Open(name, GENERIC_READ, 0, OPEN_EXISTING);
    EXPECT_EQ(CreateFileMappingW(reader, nullptr, PAGE_READWRITE, 0, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), 5u);
}

}  // namespace
