// Numbers, buffers, command lines and platform queries; text_calls.txt has what makes a text of
// texts.
#include "mox_classes/text/sysutils.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <concepts>
#include <limits>
#include <tuple>

#include "mox_classes/containers/streams.h"
#include "support/fresh_host_root.h"
#include "support/string_print.h"

using namespace Sysutils;

TEST(Sysutils, WideNumbersAndHandles) {
    static_assert(std::same_as<decltype(StrToInt64({})), std::int64_t>);
    std::int64_t exact = 0;
    EXPECT_TRUE(TryStrToInt64(TEXT("4294967297"), exact) && exact == 4294967297);
    EXPECT_EQ(StrToInt64Def(TEXT("x"), 7), 7);
    EXPECT_EQ(StrToHandleDef(TEXT("0x100000000"), nullptr), reinterpret_cast<void*>(1ULL << 32));
    int marker;
    EXPECT_EQ(StrToHandleDef(TEXT("1z"), &marker), &marker);
    float narrow = 0;
    EXPECT_TRUE(TryStrToFloat(TEXT("-3.4028235e38"), narrow));
    EXPECT_EQ(narrow, std::numeric_limits<float>::lowest()) << "rounds to the largest float";
}

TEST(Sysutils, UnitsAndBuffers) {
    const UnicodeString text(TEXT("a\xD800\xDC00\\b"));
    EXPECT_TRUE(text.IsLeadSurrogate(2) && text.IsTrailSurrogate(3) && text.IsPathDelimiter(4));
    const WCHAR* const units = TEXT("abca");
    EXPECT_EQ(StrScan(units, 'a'), units);
    EXPECT_EQ(StrScan(units, 0), units + 4);
    EXPECT_EQ(StrScan(units, 'x'), nullptr);
    const WCHAR* null = nullptr;
    EXPECT_TRUE(AnsiExtractQuotedStr(null, '"').IsEmpty());
    WCHAR buffer[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(CopyCch(buffer, 0, TEXT("hello")), 0);
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(CopyCch(buffer, 3, TEXT("hello")), 2);
    EXPECT_EQ(UnicodeString(buffer), TEXT("he"));
    EXPECT_EQ(buffer[3], '#');
    System::TCodePage code_page;
    EXPECT_EQ(CheckBOM(&code_page, nullptr, 9), 0);
}

TEST(Sysutils, CommandLinesAreSplitAtTheProgram) {
    const test::FreshHostRoot root;
    const UnicodeString folder = GetTempPathW() + TEXT("a b");
    CreateDirectoryW(folder.t_str(), nullptr);
    const UnicodeString program = folder + TEXT("\\x y.exe");
    Classes::TFileStream(program, Classes::TFileStream::kCreate);
    EXPECT_TRUE(FileExists(program) && DirectoryExists(folder));
    EXPECT_FALSE(FileExists(folder) || DirectoryExists(program) || FileExists(UnicodeString()));

    const std::tuple<UnicodeString, UnicodeString, const WCHAR*, bool> rows[] = {
        {TEXT("  \"") + program + TEXT("\"  -x "), program, TEXT("-x"), true},
        {program + TEXT("  -x y"), program, TEXT(" -x y"), true},
        {program, program, TEXT(""), true},
        {TEXT("\"c:\\none"), TEXT("c:\\none"), TEXT(""), false},
        {TEXT("c:\\none at all"), TEXT("c:\\none at all"), TEXT(""), false}};
    for (const auto& [line, expected, rest, found] : rows) {
        UnicodeString name = line, params = TEXT("old");
        EXPECT_EQ(ParseCommandLine(name, name, params), found);
        EXPECT_EQ(name, expected);
        EXPECT_EQ(params, rest);
    }
    DeleteFileW(program.t_str());
    RemoveDirectoryW(folder.t_str());
}

TEST(Sysutils, Environment) {
    SetEnvironmentVariableW(TEXT("QV_TEST_TEXT"), TEXT("some text"));
    EXPECT_EQ(GetEnvExpanded(TEXT("<%QV_TEST_TEXT%>")), TEXT("<some text>"));
    EXPECT_TRUE(GetEnvExpanded(UnicodeString()).IsEmpty());
    SetEnvironmentVariableW(TEXT("QV_TEST_TEXT"), nullptr);
    const UnicodeString temp = GetTempPathW();
    EXPECT_TRUE(temp.IsPathDelimiter(temp.Length()));
    EXPECT_GT(GetSystemDir().Length(), 0);
    EXPECT_GT(ExeName(nullptr).Pos(TEXT("qv_tests")), 1);
    EXPECT_TRUE(CheckWin32Version(5, 0) && CheckWin32Version(6, 1));
    EXPECT_FALSE(CheckWin32Version(99, 0));
}
