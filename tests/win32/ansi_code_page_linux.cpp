// The ANSI code page that a host root's registry names.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "support/fresh_host_root.h"

namespace {

void SetPage(const WCHAR* digits) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE,
                              TEXT("SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage"), 0, nullptr,
                              0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    const std::basic_string<WCHAR> text(digits);
    RegSetValueExW(key, TEXT("ACP"), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)));
    RegCloseKey(key);
}

}  // namespace

TEST(AnsiCodePage, IsTheRegistrysOrTheDefault) {
    {
        const test::FreshHostRoot root;
        EXPECT_EQ(GetACP(), 1252u);
    }
    {
        const test::FreshHostRoot root;
        SetPage(TEXT("932"));
        EXPECT_EQ(GetACP(), 932u);
        const char text[] = "\x83\x65z\x83";
        EXPECT_EQ(CharNextA(text), text + 2);
        EXPECT_EQ(CharNextA(text + 3), text + 4);
        EXPECT_EQ(CharNextA(text + 4), text + 4);
        WCHAR wide[4] = {};
        EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "\x83\x65z", 3, wide, 4), 2);
        EXPECT_EQ(wide[0], WCHAR{0x30C6});
    }
    {
        const test::FreshHostRoot root;
        SetPage(TEXT("65001"));
        WCHAR wide[4] = {};
        EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "\xC3\xA9", 2, wide, 4), 1);
        EXPECT_EQ(wide[0], WCHAR{0xE9});
    }
    const test::FreshHostRoot root;
    SetPage(TEXT("99999"));
    EXPECT_EQ(GetACP(), 1252u);
}
