// Images that lie, on the host whose reader is ours: an error or data inside the buffer, no more.
#include <memory>

#include "win32/file_fixture.h"
#include "win32/small_image.h"

#include <winver.h>

using namespace test;

namespace {

class HostileImages : public FileTest {
  protected:
    // Reads everything that a caller may ask for from exactly sized memory.
    DWORD ReadAll(const std::string& content) {
        if (name_.empty()) name_ = Path(TEXT("image"));
        MakeFile(name_, content);
        const DWORD size = GetFileVersionInfoSizeW(name_.c_str(), nullptr);
        if (size == 0) return GetLastError();
        const std::unique_ptr<char[]> data(new char[size]);
        EXPECT_TRUE(GetFileVersionInfoW(name_.c_str(), 0, size, data.get()));
        for (const WCHAR* const path : {TEXT("\\"), TEXT("\\VarFileInfo\\Translation"),
                                        TEXT("\\StringFileInfo\\040904B0\\CompanyName")}) {
            void* value = nullptr;
            UINT units = 0;
            if (!VerQueryValueW(data.get(), path, &value, &units)) continue;
            const auto* const bytes = static_cast<const char*>(value);
            EXPECT_TRUE(bytes >= data.get() && bytes + units <= data.get() + size);
        }
        return NO_ERROR;
    }

  private:
    Wide name_;
};

TEST_F(HostileImages, LyingHeadersAreRefused) {
    const struct {
        std::size_t at, size;
        unsigned long long value;
        DWORD error;
    } rows[] = {
        {kImageHeaderAt, 4, 0xFFFFFFF0, 1812},
        {kImageSections, 2, 0xFFFF, 1812},
        {0x54, 2, 0xFFFF, 1812},
        {0x54, 2, 0, 1812},
        {kImageTypeCount, 2, 0xFFFF, 0},
        {kImageTypeId + 4, 4, 0x80000000, 1812},
        {kImageTypeId + 4, 4, 0xFFFFFFFF, 1812},
        {kImageDataSize, 4, 0xFFFFFFFF, 1812},
        {kImageDataSize, 4, 5, 1812},
        {kImageDataSize - 4, 4, 0xFFFFFFFF, 1812},
        {kImageVersion, 2, 0xFFFF, 1812},
        {kImageVersion, 2, 3, 1812},
    };
    for (const auto& row : rows) {
        std::string image = SmallImage(true);
        Put(image, row.at, row.value, row.size);
        EXPECT_EQ(ReadAll(image), row.error) << &row - rows;
    }
}

TEST_F(HostileImages, EveryByteOfTheVersionMayLie) {
    const std::string image = SmallImage(false);
    for (std::size_t at = kImageVersion; at < kImageVersion + SampleVersion().size(); ++at) {
        for (const char value : {'\0', '\x01', '\x7F', '\xFF'}) {
            std::string damaged = image;
            damaged[at] = value;
            ReadAll(damaged);
        }
    }
    for (std::size_t size = 0; size < image.size(); size += 7) ReadAll(image.substr(0, size));
}

TEST_F(HostileImages, ASmallBufferIsRefused) {
    const Wide name = Path(TEXT("image"));
    MakeFile(name, SmallImage(true));
    char data[8];
    EXPECT_FALSE(GetFileVersionInfoW(name.c_str(), 0, sizeof data, data));
    EXPECT_EQ(GetLastError(), 122u);
}

}  // namespace
