// What only the Linux host states: message texts, debugger output, some conversions.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdarg>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "support/fresh_host_root.h"
#include "support/test_registry.h"

namespace {

std::basic_string<WCHAR> Text(const WCHAR* format, ...) {
    WCHAR buffer[100] = {};
    std::va_list arguments;
    va_start(arguments, format);
    _vsnwprintf(buffer, 100, format, arguments);
    va_end(arguments);
    return buffer;
}

}  // namespace

// The transcripts show others.
TEST(KernelOfThisHost, AMessageWithInsertsIsNotGivenWithoutTheFlagThatKeepsThem) {
    WCHAR text[200];
    EXPECT_EQ(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 317, 0, text, 200, nullptr), 0u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST(KernelOfThisHost, DebuggerOutputGoesToTheNamedFile) {
    const test::FreshHostRoot root;
    const std::string file = root.Folder() + "/debug";
    setenv("QV_HOST_DEBUG_OUTPUT", file.c_str(), 1);
    OutputDebugStringW(TEXT("one \u00e9"));
    OutputDebugStringW(TEXT("two\r\n"));
    unsetenv("QV_HOST_DEBUG_OUTPUT");
    OutputDebugStringW(TEXT("nowhere"));
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    EXPECT_EQ(text.str(), "one \xC3\xA9\ntwo\r\n");
}

TEST(KernelOfThisHost, ConversionsThatEachHostHasItsOwnOf) {
    EXPECT_EQ(Text(TEXT("%e %G %a %010f"), 1234.5, 1e-10, 1.0, 1e308 * 10),
              TEXT("1.234500e+03 1E-10 0x1.0000000000000p+0        inf"));
    // Unknown ones read nothing.
    EXPECT_EQ(Text(TEXT("%y%d%n|%"), 7), TEXT("y7n|"));
    EXPECT_EQ(Text(TEXT("%hs"), "\x80"), TEXT("\u20ac"));
}

TEST(KernelOfThisHost, TheAnsiCodePageIsTheRegistrysOrTheDefault) {
    const struct {
        const WCHAR* page;
        const char* text;
        WCHAR expected;
        int next;
    } rows[] = {{TEXT("932"), "\x83\x65", 0x30C6, 2},
                {TEXT("65001"), "\xC3\xA9", 0xE9, 1},
                {TEXT("99999"), "\x80", 0x20AC, 1},
                {nullptr, "\x80", 0x20AC, 1}};
    for (const auto& row : rows) {
        const test::FreshHostRoot root;
        test::TestKey key(HKEY_LOCAL_MACHINE,
                          TEXT("SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage"));
        if (row.page != nullptr) key.Set(TEXT("ACP"), row.page);
        WCHAR wide[4] = {};
        EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, row.text, -1, wide, 4), 2);
        EXPECT_EQ(wide[0], row.expected);
        EXPECT_EQ(CharNextA(row.text), row.text + row.next);
        // Half a character and the end are not passed.
        const char half[] = "\x83";
        EXPECT_EQ(CharNextA(half), half + 1);
        EXPECT_EQ(CharNextA(half + 1), half + 1);
    }
}
