// Numbers, texts, paths, command lines and platform queries.
#include "mox_classes/text/sysutils.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cmath>
#include <concepts>
#include <limits>
#include <tuple>

#include "mox_classes/containers/streams.h"
#include "support/fresh_host_root.h"
#include "support/string_print.h"
#include "support/thrown_text.h"

using namespace Sysutils;
using test::ThrownText;

TEST(Sysutils, Integers) {
    const std::pair<const char*, int> whole[] = {
        {"0x1F", 31}, {"0Xff", 255}, {"-12", -12},      {"+7", 7},
        {"-", 0},     {"0x", 0},     {"4294967297", 1}, {"2147483648", INT_MIN}};
    const std::pair<const char*, int> partial[] = {{"", 0},   {" 1", 0},   {"12a", 12}, {"-3x", -3},
                                                   {"1-", 1}, {"0x1G", 1}, {"-0x1", 0}};
    const auto check = [](const char* text, int value, bool is_whole) {
        int read = 99;
        EXPECT_EQ(TryStrToInt(text, read), is_whole) << text;
        EXPECT_EQ(read, value) << text;
        EXPECT_EQ(StrToIntDef(text, -5), is_whole ? value : -5);
    };
    for (const auto& [text, value] : whole) check(text, value, true);
    for (const auto& [text, value] : partial) check(text, value, false);
    EXPECT_EQ(ThrownText([] { StrToInt(TEXT("12a")); }),
              TEXT("'12a' is not a valid integer value"));
    EXPECT_EQ(ThrownText([] { StrToInt64(TEXT("")); }), TEXT("'' is not a valid integer value"));
    EXPECT_EQ(StrToInt64(TEXT("-9223372036854775808")), INT64_MIN);
    EXPECT_EQ(StrToInt64Def(TEXT("0x7fffffffffffffff"), 0), INT64_MAX);
    static_assert(std::same_as<decltype(StrToInt64({})), std::int64_t>);
    std::int64_t exact = 0;
    EXPECT_TRUE(TryStrToInt64(TEXT("4294967297"), exact) && exact == 4294967297);
    EXPECT_EQ(StrToHandleDef(TEXT("0x100000000"), nullptr), reinterpret_cast<void*>(1ULL << 32));
    int marker;
    EXPECT_EQ(StrToHandleDef(TEXT("1z"), &marker), &marker);
}

TEST(Sysutils, FloatingPoint) {
    const std::pair<const char*, double> whole[] = {{"", 0},      {"1.5", 1.5}, {" \t-2e3", -2000},
                                                    {"+.5", 0.5}, {"5.", 5},    {"0x1.8p1", 3},
                                                    {"1e-400", 0}};
    const std::pair<const char*, double> partial[] = {{"1.5x", 1.5}, {"1e", 1}, {"1e+", 1},
                                                      {".", 0},      {"  ", 0}, {"+-1", 0},
                                                      {"1,5", 1},    {"0x", 0}, {"1.5 ", 1.5}};
    const auto check = [](const UnicodeString& text, double value, bool is_whole) {
        double read = 99;
        EXPECT_EQ(TryStrToFloat(text, read), is_whole) << test::Shown(text.t_str());
        EXPECT_EQ(read, value) << test::Shown(text.t_str());
        EXPECT_EQ(StrToFloatDef(text, 7), is_whole ? value : 7);
    };
    for (const auto& [text, value] : whole) check(text, value, true);
    for (const auto& [text, value] : partial) check(text, value, false);
    check(TEXT("1\x0660"), 1, false);
    check("-1e400", -HUGE_VAL, true);
    for (const char* text :
         {"1e400", "inf", "0.00000000000000000001e400", "1e9999999999999999999"}) {
        check(text, HUGE_VAL, true);
    }
    EXPECT_EQ(ThrownText([] { StrToFloat(TEXT("1.5x")); }),
              TEXT("'1.5x' is not a valid floating point value"));
    float narrow = 0;
    EXPECT_TRUE(TryStrToFloat(TEXT("1e300"), narrow) && std::isinf(narrow));
    EXPECT_TRUE(TryStrToFloat(TEXT("3.4028236e38"), narrow) && std::isinf(narrow));
    EXPECT_TRUE(TryStrToFloat(TEXT("-3.4028235e38"), narrow));
    EXPECT_EQ(narrow, std::numeric_limits<float>::lowest()) << "rounds to the largest float";
    EXPECT_EQ(FloatToStr(-1.25L), TEXT("-1.250000"));
    EXPECT_EQ(UnicodePrintf(TEXT("%u%%"), 5u), TEXT("5%"));
}

TEST(Sysutils, DelimitersAndSurrogates) {
    const UnicodeString text(TEXT("a\xD800\xDC00\\b"));
    EXPECT_EQ(ByteType(text, 0), mbSingleByte);
    EXPECT_EQ(ByteType(text, 2), mbLeadByte);
    EXPECT_EQ(ByteType(text, 3), mbTrailByte);
    EXPECT_TRUE(text.IsLeadSurrogate(2) && text.IsTrailSurrogate(3) && text.IsPathDelimiter(4));
    EXPECT_TRUE(IsDelimiter(TEXT("xb"), text, 5));
    EXPECT_FALSE(IsDelimiter(TEXT("\xD800"), text, 2));
    EXPECT_FALSE(IsDelimiter(TEXT("a"), text, 6));
    EXPECT_EQ(LastDelimiter(TEXT("a\xDC00"), text), 1);
    EXPECT_EQ(LastDelimiter(TEXT("x"), text), 0);
    const WCHAR* const units = TEXT("abca");
    EXPECT_EQ(StrScan(units, 'a'), units);
    EXPECT_EQ(StrScan(units, 0), units + 4);
    EXPECT_EQ(StrScan(units, 'x'), nullptr);
    EXPECT_TRUE(IsAlphaNumericString(TEXT(".t_1")) && IsAlphaNumericString(TEXT("-")));
    EXPECT_FALSE(IsAlphaNumericString(TEXT(".t-t")));
}

TEST(Sysutils, HashAndCopy) {
    EXPECT_EQ(StringHash(UnicodeString()), 0u);
    EXPECT_EQ(StringHash(TEXT("a")), 0x61u);
    EXPECT_EQ(StringHash(TEXT("ab")), 0x00620061u);
    EXPECT_EQ(StringHash(TEXT("abc")), 0x00620061u * 31 + 0x63);
    WCHAR buffer[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(CopyCch(buffer, 0, TEXT("hello")), 0);
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(CopyCch(buffer, 3, TEXT("hello")), 2);
    EXPECT_EQ(UnicodeString(buffer), TEXT("he"));
    EXPECT_EQ(buffer[3], '#');
}

TEST(Sysutils, Quotes) {
    EXPECT_EQ(QuotedStr(TEXT("it's")), TEXT("'it''s'"));
    EXPECT_EQ(QuotedStr(UnicodeString()), TEXT("''"));
    const std::tuple<const WCHAR*, const WCHAR*, int> rows[] = {
        {TEXT("'it''s',x"), TEXT("it's"), 7},
        {TEXT("x'a'"), TEXT(""), 0},
        {TEXT("''x"), TEXT(""), 2},
        {TEXT("'abc"), TEXT("ab"), 4},
        {TEXT("'"), TEXT(""), 1},
        {TEXT("'a''"), TEXT("a'"), 4},
        {TEXT("''''"), TEXT("'"), 4},
        {TEXT(""), TEXT(""), 0}};
    for (const auto& [text, value, moved] : rows) {
        const WCHAR* p = text;
        EXPECT_EQ(AnsiExtractQuotedStr(p, '\''), value);
        EXPECT_EQ(p - text, moved) << test::Shown(text);
    }
    const WCHAR* null = nullptr;
    EXPECT_TRUE(AnsiExtractQuotedStr(null, '"').IsEmpty());
}

TEST(Sysutils, Names) {
    EXPECT_EQ(ExtractFileName(TEXT("c:file")), TEXT("file"));
    EXPECT_EQ(ExtractFileName(TEXT("a\\b/c")), TEXT("b/c"));
    EXPECT_EQ(ExtractFilePath(TEXT("c:\\d\\file")), TEXT("c:\\d\\"));
    EXPECT_TRUE(ExtractFilePath(TEXT("file")).IsEmpty());
    EXPECT_EQ(ExtractFileExt(TEXT("c:\\dir.d\\file")), TEXT(""));
    EXPECT_EQ(ExtractFileExt(TEXT("file.tar.gz")), TEXT(".gz"));
    EXPECT_EQ(ChangeFileExt(TEXT("a.txt"), TEXT(".pdf"), true), TEXT("a.pdf"));
    EXPECT_EQ(ChangeFileExt(TEXT("a.b c"), TEXT(".pdf"), true), TEXT("a.b c.pdf"));
    EXPECT_EQ(ChangeFileExt(TEXT("a.b c"), TEXT(".pdf"), false), TEXT("a.pdf"));
    EXPECT_EQ(FixFileName(TEXT("a:b"), '_'), TEXT("a_b"));
    EXPECT_EQ(FixFileName(TEXT("a:b\\"), 0), TEXT("a\xFF1A") TEXT("b\xFF3C"));
    EXPECT_EQ(FixDirName(TEXT("c:\\dir*"), '_'), TEXT("c:\\dir_"));
    EXPECT_EQ(GetFullpath(TEXT("c:\\x"), TEXT("y")), TEXT("c:\\x\\y"));
    EXPECT_EQ(GetFullpath(TEXT("c:\\x"), TEXT("\\\\srv\\s")), TEXT("\\\\srv\\s"));
    EXPECT_EQ(GetFullpath(TEXT("c:\\x"), TEXT("d:\\y")), TEXT("d:\\y"));
    EXPECT_EQ(GetFullpath(TEXT("c:\\x"), TEXT("ab")), TEXT("c:\\x\\ab"));
    EXPECT_EQ(GetFullpath(TEXT("c:\\x\\"), TEXT("a\\b")), TEXT("c:\\x\\a\\b"));
    EXPECT_TRUE(ConfirmPathString(TEXT("")).IsEmpty());
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
    EXPECT_EQ(BuildCommandLine(TEXT("c:\\a b\\x.exe"), TEXT("-q")), TEXT("\"c:\\a b\\x.exe\" -q"));
    EXPECT_EQ(BuildCommandLine(TEXT("c:\\a b\\x.exe"), TEXT("")), TEXT("\"c:\\a b\\x.exe\""));
    EXPECT_EQ(BuildCommandLine(TEXT("x.exe"), TEXT("-q")), TEXT("x.exe -q"));
}

TEST(Sysutils, ByteOrderMarks) {
    const std::tuple<const char*, int, int, int> rows[] = {
        {"\xFF\xFE\0\0", 4, 12000, 4}, {"\0\0\xFE\xFF", 4, 12001, 4},
        {"\xEF\xBB\xBF", 3, 65001, 3}, {"\xFF\xFE\x41\0", 4, 1200, 2},
        {"\xFF\xFE\0\0", 3, 1200, 2},  {"\xFE\xFF", 2, 1201, 2},
        {"\xFF", 1, 20127, 0},         {"ab", 2, 20127, 0},
        {"\xEF\xBB\xBF", 2, 20127, 0}, {nullptr, 9, 20127, 0}};
    for (const auto& [bytes, size, expected, length] : rows) {
        System::TCodePage code_page;
        EXPECT_EQ(CheckBOM(&code_page, bytes, size), length);
        EXPECT_EQ(code_page, expected);
    }
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
