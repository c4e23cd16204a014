// Names in folders as both hosts have them: attributes, search, making and removing.
#include "win32/file_fixture.h"

using namespace test;

namespace {

class Folders : public FileTest {
  protected:
    // The name of the first match; "error N" when there is none.
    Wide FirstMatch(const Wide& pattern) {
        data_ = {};
        const HANDLE search = FindFirstFileW((Folder() + TEXT('\\') + pattern).c_str(), &data_);
        if (search == INVALID_HANDLE_VALUE) return TEXT("error ") + Decimal(GetLastError());
        EXPECT_TRUE(FindClose(search));
        return data_.cFileName;
    }
    WIN32_FIND_DATAW data_{};
};

TEST_F(Folders, AttributesTellFilesFromFolders) {
    MakeFile(Path(TEXT("Some.Txt")), "x");
    for (const Wide& folder :
         {Folder(), Folder() + TEXT("\\"), Wide(TEXT("C:\\")), Wide(TEXT("C:\\..\\..\\..")),
          TEXT("C:\\..\\") + Folder().substr(3)}) {
        EXPECT_EQ(GetFileAttributesW(folder.c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0x10u);
        EXPECT_NE(GetFileAttributesW(folder.c_str()), INVALID_FILE_ATTRIBUTES);
    }
    const struct {
        const WCHAR* name;
        DWORD error;
    } rows[] = {
        {TEXT("Some.Txt"), 0},    {TEXT("sOME.tXT"), 0}, {TEXT(".\\x\\..\\some.txt"), 0},
        {TEXT("some.txt."), 0},   {TEXT("none"), 2},     {TEXT("none\\x"), 3},
        {TEXT("Some.Txt\\x"), 3}, {TEXT("so*"), 123},
    };
    for (const auto& row : rows) {
        const DWORD attributes = GetFileAttributesW((Folder() + TEXT('/') + row.name).c_str());
        EXPECT_EQ(ErrorUnless(attributes != INVALID_FILE_ATTRIBUTES), row.error) << &row - rows;
        if (row.error == 0) {
            EXPECT_EQ(attributes & FILE_ATTRIBUTE_DIRECTORY, 0u);
        }
    }
}

TEST_F(Folders, SearchFindsNamesAndPatterns) {
    MakeFile(Path(TEXT("beta.log")), "12345");
    MakeFile(Path(TEXT("Alpha.txt")), "");
    const WCHAR* const rows[][2] = {
        {TEXT("*.log"), TEXT("beta.log")},      {TEXT("a*"), TEXT("Alpha.txt")},
        {TEXT("?lpha.t*t"), TEXT("Alpha.txt")}, {TEXT("*"), TEXT(".")},
        {TEXT("*a.*g"), TEXT("beta.log")},      {TEXT("c*"), TEXT("error 2")},
        {TEXT("none\\*"), TEXT("error 3")},     {TEXT(""), TEXT("error 2")},
        {TEXT("BETA.log"), TEXT("beta.log")},
    };
    for (const auto& row : rows) EXPECT_EQ(FirstMatch(row[0]), row[1]);
    EXPECT_EQ(data_.nFileSizeLow, 5u);
    EXPECT_EQ(data_.nFileSizeHigh, 0u);
    EXPECT_EQ(data_.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY, 0u);
    EXPECT_GT(data_.ftLastWriteTime.dwHighDateTime, 0x01D00000u);
}

TEST_F(Folders, FoldersAreMadeAndRemovedOnce) {
    const Wide name = Path(TEXT("sub"));
    EXPECT_TRUE(CreateDirectoryW(name.c_str(), nullptr));
    EXPECT_EQ(ErrorUnless(CreateDirectoryW(name.c_str(), nullptr)), 183u);
    EXPECT_EQ(ErrorUnless(CreateDirectoryW((Folder() + TEXT("\\a\\b")).c_str(), nullptr)), 3u);
    const Wide file = name + TEXT("\\f");
    MakeFile(file, "x");
    EXPECT_EQ(ErrorUnless(RemoveDirectoryW(name.c_str())), 145u);
    EXPECT_EQ(ErrorUnless(RemoveDirectoryW(file.c_str())), 267u);
    EXPECT_EQ(ErrorUnless(DeleteFileW(name.c_str())), 5u);
    EXPECT_TRUE(DeleteFileW(file.c_str()));
    EXPECT_EQ(ErrorUnless(DeleteFileW(file.c_str())), 2u);
    EXPECT_TRUE(RemoveDirectoryW(name.c_str()));
    EXPECT_EQ(ErrorUnless(RemoveDirectoryW(name.c_str())), 2u);
}

}  // namespace
