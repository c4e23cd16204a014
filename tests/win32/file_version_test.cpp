// Version resources of images as both hosts read them.
#include <cstring>

#include "win32/file_fixture.h"
#include "win32/small_image.h"

#include <winver.h>

using namespace test;

namespace {

void Put(std::string& bytes, std::size_t at, unsigned value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
}

class FileVersions : public FileTest {
  protected:
    // The last error of reading all that a caller may ask for; the values stay in the members.
    DWORD ReadAll(const std::string& content) {
        if (name_.empty()) name_ = Path(TEXT("image.dll"));
        MakeFile(name_, content);
        DWORD handle = 7;
        const DWORD size = GetFileVersionInfoSizeW(name_.c_str(), &handle);
        EXPECT_EQ(handle, 0u);
        data_.assign(size, '\0');
        if (size == 0) return GetLastError();
        EXPECT_TRUE(GetFileVersionInfoW(name_.c_str(), 0, size, data_.data()));
        fixed_ = Query(TEXT("\\"));
        languages_ = Query(TEXT("\\VarFileInfo\\Translation"));
        company_ = Query(TEXT("\\stringfileinfo\\040904b0\\COMPANYNAME"));
        return NO_ERROR;
    }
    // A value's bytes; "none" when there is no such value.
    std::string Query(const WCHAR* path) {
        void* value = nullptr;
        if (!VerQueryValueW(data_.data(), path, &value, &units_)) return "none";
        const auto* const bytes = static_cast<const char*>(value);
        EXPECT_TRUE(bytes >= data_.data() && bytes + units_ <= data_.data() + data_.size());
        return std::string(bytes, units_);
    }

    Wide name_;
    std::string data_, fixed_, languages_, company_;
    UINT units_ = 0;
};

TEST_F(FileVersions, NarrowAndWideImagesTellTheirVersion) {
    for (const bool wide : {false, true}) {
        ASSERT_EQ(ReadAll(SmallImage(wide)), 0u);
        VS_FIXEDFILEINFO fixed;
        ASSERT_EQ(fixed_.size(), sizeof fixed);
        std::memcpy(&fixed, fixed_.data(), sizeof fixed);
        EXPECT_EQ(fixed.dwFileVersionMS, 0x00010002u);
        EXPECT_EQ(fixed.dwFileVersionLS, 0x00030004u);
        EXPECT_EQ(languages_, "\x09\x04\xB0\x04");
        EXPECT_EQ(company_, std::string("Q\0v", 3)) << "as many bytes as it has units";
        EXPECT_EQ(Query(TEXT("\\StringFileInfo\\040904B0\\Product")), "none");
        EXPECT_EQ(GetLastError(), 1813u);
        char small[8];
        ExpectExceptOnWine(
            ErrorUnless(GetFileVersionInfoW(name_.c_str(), 0, sizeof small, small)) == 122,
            "a buffer that is too small");
    }
}

TEST_F(FileVersions, FilesWithoutAVersionSaySo) {
    std::string other_type = SmallImage(true);
    Put(other_type, 0x210, 6, 4);
    ExpectExceptOnWine(ReadAll(other_type) == 1813, "resources, but none of this type");
    for (const std::string& content : {std::string(), std::string("MZ"), std::string(4096, 'x')}) {
        EXPECT_EQ(ReadAll(content), 1812u);
    }
    EXPECT_EQ(ErrorUnless(GetFileVersionInfoSizeW(TEXT("C:\\none.dll"), nullptr)), 2u);
}

TEST_F(FileVersions, LyingHeadersAreRefused) {
    if (UnderWine()) GTEST_SKIP() << "Wine believes some of them";
    const struct {
        std::size_t at, size;
        unsigned value;
        DWORD error;
    } rows[] = {
        {60, 4, 0xFFFFFFF0, 1812},     // where the headers are
        {0x46, 2, 0xFFFF, 1812},       // sections
        {0x54, 2, 0xFFFF, 1812},       // size of the optional header
        {0x54, 2, 0, 1812},            //
        {0x20E, 2, 0xFFFF, 0},         // types of resources
        {0x214, 4, 0x80000000, 1812},  // where the first type's table is
        {0x214, 4, 0xFFFFFFFF, 1812},  //
        {0x248, 4, 0xFFFFFFFF, 1812},  // where the data are
        {0x24C, 4, 0xFFFFFFFF, 1812},  // how many
        {0x24C, 4, 5, 1812},           //
        {0x258, 2, 0xFFFF, 1812},      // size of the version block
        {0x258, 2, 3, 1812},           //
    };
    for (const auto& row : rows) {
        std::string image = SmallImage(true);
        Put(image, row.at, row.value, row.size);
        EXPECT_EQ(ReadAll(image), row.error) << &row - rows;
    }
}

}  // namespace
