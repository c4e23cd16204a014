// File mappings as both hosts have them.
#include <cstring>

#include "win32/file_fixture.h"

using namespace test;

namespace {

class Mappings : public FileTest {
  protected:
    static HANDLE Create(const WCHAR* name, DWORD size, DWORD protect = PAGE_READWRITE,
                         HANDLE file = INVALID_HANDLE_VALUE) {
        SetLastError(kUntouched);
        return CreateFileMappingW(file, nullptr, protect, 0, size, name);
    }
    static char* View(HANDLE mapping, SIZE_T bytes, DWORD access = FILE_MAP_ALL_ACCESS,
                      DWORD offset = 0) {
        return static_cast<char*>(MapViewOfFile(mapping, access, 0, offset, bytes));
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
    const HANDLE other = Create(TEXT("qv test/Block"), 10);
    EXPECT_EQ(GetLastError(), 0u) << "names are told apart";
    EXPECT_TRUE(CloseHandle(third) && CloseHandle(second) && CloseHandle(other));
    const HANDLE fresh = Create(TEXT("qv test/block"), 100);
    EXPECT_EQ(GetLastError(), 0u) << "a view alone keeps the memory, not the name";
    EXPECT_STREQ(b, "shared");
    char* const c = View(fresh, 0);
    EXPECT_EQ(c[0], 0) << "a new block is zeros";
    EXPECT_TRUE(UnmapViewOfFile(b) && UnmapViewOfFile(c) && CloseHandle(fresh));
}

TEST_F(Mappings, WhatCannotBeMappedIsRefused) {
    EXPECT_EQ(ErrorUnless(Create(TEXT("qv_none"), 0)), 87u);
    EXPECT_EQ(ErrorUnless(Create(nullptr, 10, 0x1234)), 87u);
    const HANDLE mapping = Create(nullptr, 5000, PAGE_READONLY);
    EXPECT_EQ(ErrorUnless(View(mapping, 0)), 5u) << "read-only";
    EXPECT_EQ(ErrorUnless(View(mapping, 8193, FILE_MAP_READ)), 5u);
    EXPECT_EQ(ErrorUnless(View(mapping, 1, FILE_MAP_READ, 4096)), 1132u);
    char* const view = View(mapping, 0, FILE_MAP_READ);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view[4999], 0);
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_EQ(ErrorUnless(UnmapViewOfFile(view)), 487u);
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_EQ(ErrorUnless(View(mapping, 0, FILE_MAP_READ)), 6u);
    const HANDLE file = OpenShared(Path(TEXT("file")));
    EXPECT_EQ(ErrorUnless(View(file, 0, FILE_MAP_READ)), 6u) << "no mapping";
    EXPECT_EQ(ErrorUnless(Create(nullptr, 0, PAGE_READWRITE, file)), 1006u) << "an empty file";
}

TEST_F(Mappings, FilesAreMappedAndGrow) {
    const Wide name = Path(TEXT("mapped"));
    const HANDLE file = OpenShared(name);
    Write(file, "abc" + std::string(0x10000, 'y'));
    const HANDLE mapping = Create(nullptr, 0x10010, PAGE_READWRITE, file);
    char* const view = View(mapping, 0);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(std::string(view, 4), "abcy");
    EXPECT_EQ(view[0x10004], 0);
    view[0x1000F] = 'z';
    char* const second = View(mapping, 16, FILE_MAP_READ, 0x10000);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(std::string(second, 3), "yyy");
    EXPECT_EQ(second[15], 'z');
    EXPECT_TRUE(UnmapViewOfFile(second) && UnmapViewOfFile(view) && CloseHandle(mapping));
    EXPECT_EQ(GetFileSize(file, nullptr), 0x10010u);
    SetFilePointer(file, 0x1000F, nullptr, FILE_BEGIN);
    EXPECT_EQ(Read(file, 5), "z");
    Close(file);
    const HANDLE reader = Open(name, GENERIC_READ, 0, OPEN_EXISTING);
    EXPECT_EQ(ErrorUnless(Create(nullptr, 0, PAGE_READWRITE, reader)), 5u);
}

}  // namespace
