// Strings of a module's table against the system's own reader.
#include <gtest/gtest.h>
#include <windows.h>

#include "mox_classes/text/unicode_string.h"
#include "support/string_print.h"

TEST(StringTable, ReadsWhatTheSystemReads) {
    const HINSTANCE module = LoadLibraryW(L"shell32.dll");
    int found = 0;
    for (int id = 0; id < 10000; ++id) {
        wchar_t expected[1024];
        const int length = ::LoadStringW(module, static_cast<UINT>(id), expected, 1024);
        EXPECT_EQ(UnicodeString::LoadStr(module, id), UnicodeString(expected, length)) << id;
        found += length > 0;
    }
    EXPECT_GT(found, 10);
    UnicodeString kept(L"kept");
    EXPECT_EQ(kept.LoadStringW(module, 65536 + 1), L"kept");
    EXPECT_EQ(kept.LoadStringW(module, -1), L"kept");
    FreeLibrary(module);
}
