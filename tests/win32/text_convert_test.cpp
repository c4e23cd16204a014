// UTF-8 and code page conversion, the same on both hosts.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "support/wine_gap.h"

namespace {

using Wide = std::basic_string<WCHAR>;

struct Converted {
    int length;
    DWORD error;
    Wide text;
};

Converted ToWide(const std::string& bytes, DWORD flags = 0, UINT page = CP_UTF8) {
    WCHAR buffer[64] = {};
    SetLastError(0xBEEF);
    const int length =
        MultiByteToWideChar(page, flags, bytes.data(), static_cast<int>(bytes.size()), buffer, 64);
    return {length, GetLastError(), Wide(buffer, static_cast<std::size_t>(length))};
}

std::string ToUtf8(const Wide& text, DWORD flags = 0) {
    char buffer[64] = {};
    const int length = WideCharToMultiByte(
        CP_UTF8, flags, text.data(), static_cast<int>(text.size()), buffer, 64, nullptr, nullptr);
    return {buffer, static_cast<std::size_t>(length)};
}

}  // namespace

TEST(TextConvert, Utf8RoundTripsEveryLength) {
    const Wide text = TEXT("plain ASCII \u00e9 \u20ac \xD83D\xDE00 end");
    const std::string bytes = "plain ASCII \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 end";
    EXPECT_EQ(ToWide(bytes).text, text);
    EXPECT_EQ(ToUtf8(text), bytes);
}

TEST(TextConvert, EachMaximalIllFormedPartBecomesOneReplacement) {
    struct {
        std::string bytes;
        Wide text;
    } const rows[] = {
        {"\x80", TEXT("\uFFFD")},
        {"a\xC3", TEXT("a\uFFFD")},
        {"\xC0\xAF!", TEXT("\uFFFD\uFFFD!")},
        {"\xE2\x82z", TEXT("\uFFFDz")},
        {"\xF0\x9F\x98z", TEXT("\uFFFDz")},
        {"\xF5z", TEXT("\uFFFDz")},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ToWide(row.bytes).text, row.text);
        EXPECT_EQ(ToWide(row.bytes, MB_ERR_INVALID_CHARS).error, ERROR_NO_UNICODE_TRANSLATION);
    }
    for (const char* bytes : {"\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE0\x80\x80"}) {
        EXPECT_EQ(ToWide(bytes).text[0], WCHAR{0xFFFD});
        EXPECT_EQ(ToWide(bytes, MB_ERR_INVALID_CHARS).length, 0);
    }
}

TEST(TextConvert, UnpairedSurrogatesAreReplacedOrRefused) {
    const Wide lead = {'a', WCHAR{0xD800}, 'b'};
    const Wide trail = {WCHAR{0xDC00}};
    EXPECT_EQ(ToUtf8(lead),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(ToUtf8(trail), "\xEF\xBF\xBD");
    EXPECT_EQ(ToUtf8(lead, WC_ERR_INVALID_CHARS), "");
    EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
}

TEST(TextConvert, CountedAndTerminatedFormsAndSizes) {
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, nullptr, 0), 3);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", 2, nullptr, 0), 2);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "\0\0", 2, nullptr, 0), 2);
    WCHAR wide[2];
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, wide, 2), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    char narrow[3];
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, TEXT("\u20ac!"), 2, narrow, 3, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, TEXT("\u20ac"), 1, narrow, 3, nullptr, nullptr), 3);
}

TEST(TextConvert, BadArgumentsAreRefused) {
    WCHAR wide[4];
    BOOL used = FALSE;
    const auto refused = [](int result, DWORD error) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(GetLastError(), error);
    };
    refused(MultiByteToWideChar(CP_UTF8, 0, nullptr, 1, wide, 4), ERROR_INVALID_PARAMETER);
    refused(MultiByteToWideChar(CP_UTF8, 0, "a", 0, wide, 4), ERROR_INVALID_PARAMETER);
    refused(MultiByteToWideChar(CP_UTF8, 0, "a", 1, nullptr, 4), ERROR_INVALID_PARAMETER);
    refused(MultiByteToWideChar(CP_UTF8, 0, "a", 1, wide, -1), ERROR_INVALID_PARAMETER);
    refused(MultiByteToWideChar(4, 0, "a", 1, wide, 4), ERROR_INVALID_PARAMETER);
    test::ExpectExceptOnWine(MultiByteToWideChar(CP_UTF8, MB_PRECOMPOSED, "a", 1, wide, 4) == 0 &&
                                 GetLastError() == ERROR_INVALID_FLAGS,
                             "flags of other code pages");
    test::ExpectExceptOnWine(
        WideCharToMultiByte(CP_UTF8, 0, TEXT("a"), 1, nullptr, 0, nullptr, &used) == 0 &&
            GetLastError() == ERROR_INVALID_PARAMETER,
        "no default character in UTF-8");
}

TEST(TextConvert, Page1252) {
    EXPECT_EQ(ToWide("\x80\x93\xE9", 0, 1252).text, TEXT("\u20ac\u201c\u00e9"));
    char buffer[8] = {};
    BOOL used = FALSE;
    EXPECT_EQ(WideCharToMultiByte(1252, 0, TEXT("\u20ac\u00e9"), -1, buffer, 8, nullptr, &used), 3);
    EXPECT_STREQ(buffer, "\x80\xE9");
    EXPECT_FALSE(used);
    EXPECT_EQ(WideCharToMultiByte(1252, 0, TEXT("a\u4e00"), -1, buffer, 8, "#", &used), 3);
    EXPECT_STREQ(buffer, "a#");
    EXPECT_TRUE(used);
    EXPECT_EQ(WideCharToMultiByte(1252, 0, TEXT("\u4e00"), -1, buffer, 8, nullptr, nullptr), 2);
    EXPECT_STREQ(buffer, "?");
}

TEST(TextConvert, DoubleBytePage) {
    EXPECT_TRUE(IsDBCSLeadByteEx(932, 0x83));
    EXPECT_FALSE(IsDBCSLeadByteEx(932, 0xB1));
    EXPECT_FALSE(IsDBCSLeadByteEx(1252, 0x83));
    EXPECT_EQ(ToWide("\x83\x65\x83X\xB1z", 0, 932).text, TEXT("\u30c6\u30b9\uff71z"));
    char buffer[8] = {};
    EXPECT_EQ(WideCharToMultiByte(932, 0, TEXT("\u30c6z"), 2, buffer, 8, nullptr, nullptr), 3);
    EXPECT_STREQ(buffer, "\x83\x65z");
}
