// Version resources of images as both hosts read them.
#include <cstring>

#include "win32/file_fixture.h"
#include "win32/small_image.h"

#include <winver.h>

using namespace test;

namespace {

class FileVersions : public FileTest {
  protected:
    // The version block of a file with this content; empty, with the last error, when it has none.
    std::string Version(const std::string& content) {
        const Wide name = Path(TEXT("image.dll"));
        MakeFile(name, content);
        DWORD handle = 7;
        const DWORD size = GetFileVersionInfoSizeW(name.c_str(), &handle);
        EXPECT_EQ(handle, 0u);
        std::string data(size, '\0');
        if (size != 0 && !GetFileVersionInfoW(name.c_str(), 0, size, data.data())) data.clear();
        return data;
    }
    // A value's bytes; "none" when there is no such value.
    static std::string Query(const std::string& data, const WCHAR* path, UINT& size) {
        void* value = nullptr;
        if (!VerQueryValueW(data.data(), path, &value, &size)) return "none";
        const auto* const bytes = static_cast<const char*>(value);
        EXPECT_TRUE(bytes >= data.data() && bytes + size <= data.data() + data.size());
        return std::string(bytes, size);
    }
};

TEST_F(FileVersions, NarrowAndWideImagesTellTheirVersion) {
    for (const bool wide : {false, true}) {
        const std::string data = Version(SmallImage(wide));
        ASSERT_FALSE(data.empty()) << GetLastError();
        UINT size = 0;
        VS_FIXEDFILEINFO fixed;
        std::memcpy(&fixed, Query(data, TEXT("\\"), size).data(), sizeof fixed);
        EXPECT_EQ(size, 52u);
        EXPECT_EQ(fixed.dwFileVersionMS, 0x00010002u);
        EXPECT_EQ(fixed.dwFileVersionLS, 0x00030004u);
        EXPECT_EQ(Query(data, TEXT("\\VarFileInfo\\Translation"), size),
                  std::string("\x09\x04\xB0\x04"));
        EXPECT_EQ(Query(data, TEXT("\\stringfileinfo\\040904b0\\COMPANYNAME"), size)[0], 'Q');
        EXPECT_EQ(size, 3u);
        EXPECT_EQ(Query(data, TEXT("\\StringFileInfo\\040904B0\\Product"), size), "none");
        EXPECT_EQ(GetLastError(), 1813u);
    }
}

TEST_F(FileVersions, FilesWithoutAVersionSaySo) {
    std::string other_type = SmallImage(true);
    Put(other_type, kImageTypeId, 6, 4);
    EXPECT_EQ(Version(other_type), "");
    ExpectExceptOnWine(GetLastError() == 1813, "resources, but none of this type");
    for (const std::string& content : {std::string(), std::string("MZ"), std::string(4096, 'x')}) {
        EXPECT_EQ(Version(content), "");
        EXPECT_EQ(GetLastError(), 1812u);
    }
    EXPECT_EQ(GetFileVersionInfoSizeW((Folder() + TEXT("\\none.dll")).c_str(), nullptr), 0u);
    EXPECT_EQ(GetLastError(), 2u);
}

}  // namespace
