// The version resource of the built library, as an installer reads it.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

namespace {

TEST(VersionResource, LibraryTellsItsVersionAsNumberAndText) {
    const WCHAR* file = TEXT("qv_rtl.dll");
    DWORD ignored = 0;
    std::vector<BYTE> data(GetFileVersionInfoSizeW(file, &ignored));
    ASSERT_FALSE(data.empty());
    ASSERT_TRUE(GetFileVersionInfoW(file, 0, static_cast<DWORD>(data.size()), data.data()));

    void* part = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(data.data(), TEXT("\\"), &part, &size));
    EXPECT_EQ(static_cast<VS_FIXEDFILEINFO*>(part)->dwFileVersionMS, 0x00010000u);
    ASSERT_TRUE(
        VerQueryValueW(data.data(), TEXT("\\StringFileInfo\\040904B0\\FileVersion"), &part, &size));
    EXPECT_EQ(std::wstring(static_cast<WCHAR*>(part)), TEXT("1.0.0.0"));
}

}  // namespace
