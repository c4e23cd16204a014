// Names in folders as both hosts have them: attributes, search, deletion, the current folder.
#include "win32/file_fixture.h"

using namespace test;

namespace {

class Folders : public FileTest {
  protected:
    Wide FirstMatch(const Wide& pattern) {
        WIN32_FIND_DATAW data;
        const HANDLE search = FindFirstFileW((Folder() + TEXT('\\') + pattern).c_str(), &data);
        if (search == INVALID_HANDLE_VALUE) return TEXT("error ") + Decimal(GetLastError());
        EXPECT_TRUE(FindClose(search));
        return data.cFileName;
    }
};

TEST_F(Folders, AttributesTellFilesFromFolders) {
    MakeFile(Path(TEXT("Some.Txt")), "x");
    EXPECT_EQ(GetFileAttributesW(Folder().c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0x10u);
    EXPECT_EQ(GetFileAttributesW((Folder() + TEXT("\\")).c_str()) & FILE_ATTRIBUTE_DIRECTORY,
              0x10u);
    EXPECT_EQ(GetFileAttributesW(TEXT("C:\\")) & FILE_ATTRIBUTE_DIRECTORY, 0x10u);
    const struct {
        const WCHAR* name;
        DWORD error;
    } rows[] = {
        {TEXT("Some.Txt"), 0},    {TEXT("sOME.tXT"), 0}, {TEXT(".\\x\\..\\some.txt"), 0},
        {TEXT("some.txt."), 0},   {TEXT("none"), 2},     {TEXT("none\\x"), 3},
        {TEXT("Some.Txt\\x"), 3}, {TEXT("so*"), 123},
    };
    for (const auto& row : rows) {
        SetLastError(kUntouched);
        const DWORD attributes = GetFileAttributesW((Folder() + TEXT('/') + row.name).c_str());
        if (row.error == 0) {
            EXPECT_NE(attributes, INVALID_FILE_ATTRIBUTES) << &row - rows;
            EXPECT_EQ(attributes & FILE_ATTRIBUTE_DIRECTORY, 0u);
        } else {
            EXPECT_EQ(attributes, INVALID_FILE_ATTRIBUTES) << &row - rows;
            EXPECT_EQ(GetLastError(), row.error) << &row - rows;
        }
    }
}

TEST_F(Folders, DotsStopAtTheDrive) {
    EXPECT_EQ(GetFileAttributesW(TEXT("C:\\..\\..\\..")) & FILE_ATTRIBUTE_DIRECTORY, 0x10u);
    EXPECT_NE(GetFileAttributesW((TEXT("C:\\..\\..\\") + Folder().substr(3)).c_str()),
              INVALID_FILE_ATTRIBUTES);
}

TEST_F(Folders, SearchFindsNamesAndPatterns) {
    MakeFile(Path(TEXT("beta.log")), "12345");
    MakeFile(Path(TEXT("Alpha.txt")), "");
    EXPECT_EQ(FirstMatch(TEXT("BETA.log")), TEXT("beta.log"));
    EXPECT_EQ(FirstMatch(TEXT("*.log")), TEXT("beta.log"));
    EXPECT_EQ(FirstMatch(TEXT("a*")), TEXT("Alpha.txt"));
    EXPECT_EQ(FirstMatch(TEXT("?lpha.t*t")), TEXT("Alpha.txt"));
    EXPECT_EQ(FirstMatch(TEXT("*")), TEXT("."));
    EXPECT_EQ(FirstMatch(TEXT("c*")), TEXT("error 2"));
    EXPECT_EQ(FirstMatch(TEXT("none\\*")), TEXT("error 3"));
    EXPECT_EQ(FirstMatch(TEXT("")), TEXT("error 2"));
    WIN32_FIND_DATAW data;
    const HANDLE search = FindFirstFileW((Folder() + TEXT("\\beta.log")).c_str(), &data);
    EXPECT_EQ(data.nFileSizeLow, 5u);
    EXPECT_EQ(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY, 0u);
    EXPECT_GT(data.ftLastWriteTime.dwHighDateTime, 0x01D00000u);
    EXPECT_TRUE(FindClose(search));
}

TEST_F(Folders, FoldersAreMadeAndRemovedOnce) {
    const Wide name = Path(TEXT("sub"));
    EXPECT_TRUE(CreateDirectoryW(name.c_str(), nullptr));
    EXPECT_FALSE(CreateDirectoryW(name.c_str(), nullptr));
    EXPECT_EQ(GetLastError(), 183u);
    EXPECT_FALSE(CreateDirectoryW((Folder() + TEXT("\\a\\b")).c_str(), nullptr));
    EXPECT_EQ(GetLastError(), 3u);
    const Wide file = name + TEXT("\\f");
    MakeFile(file, "x");
    EXPECT_FALSE(RemoveDirectoryW(name.c_str()));
    EXPECT_EQ(GetLastError(), 145u);
    EXPECT_FALSE(DeleteFileW(name.c_str()));
    EXPECT_EQ(GetLastError(), 5u);
    EXPECT_TRUE(DeleteFileW(file.c_str()));
    EXPECT_FALSE(DeleteFileW(file.c_str()));
    EXPECT_EQ(GetLastError(), 2u);
    EXPECT_TRUE(RemoveDirectoryW(name.c_str()));
}

TEST_F(Folders, RelativeNamesStartAtTheCurrentFolder) {
    WCHAR before[MAX_PATH], now[MAX_PATH];
    ASSERT_NE(GetCurrentDirectoryW(MAX_PATH, before), 0u);
    MakeFile(Path(TEXT("here")), "x");
    ASSERT_TRUE(SetCurrentDirectoryW(Folder().c_str()));
    const auto length = static_cast<DWORD>(Folder().size());
    EXPECT_EQ(GetCurrentDirectoryW(MAX_PATH, now), length);
    EXPECT_EQ(Wide(now), Folder());
    EXPECT_EQ(GetCurrentDirectoryW(length, now), length + 1);
    EXPECT_NE(GetFileAttributesW(TEXT("here")), INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(GetFileAttributesW(TEXT("C:here")), INVALID_FILE_ATTRIBUTES);
    EXPECT_FALSE(SetCurrentDirectoryW((Folder() + TEXT("\\none")).c_str()));
    EXPECT_EQ(GetLastError(), 2u);
    EXPECT_TRUE(SetCurrentDirectoryW(before));
}

}  // namespace
