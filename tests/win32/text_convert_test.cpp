// UTF-8 and code page conversion, the same on both hosts; text_calls.txt has single texts.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

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

}  // namespace

TEST(TextConvert, IllFormedPartsAreFoundInAnyRun) {
    // Surrogates, overlong forms and numbers above the last character, also in the middle of a run.
    for (const char* bytes : {"\xED\xA0\x80", "\xED\xBF\xBF", "\xE0\x9F\xBF", "\xC1\xBF",
                              "\xF4\x90\x80\x80", "\xE0\x80\x80", "\xF0\x8F\xBF\xBF"}) {
        for (std::size_t before = 0; before <= 17; ++before) {
            std::string text;
            for (std::size_t i = 0; i < before; ++i) text += "\xE5\x8D\xB0";
            text += bytes + std::string(30, 'x');
            EXPECT_EQ(ToWide(text).text[before], WCHAR{0xFFFD});
            EXPECT_EQ(ToWide(text, MB_ERR_INVALID_CHARS).length, 0);
        }
    }
}

namespace {

// A piece of text in both forms; one that is ill-formed has no way back.
struct Piece {
    std::string bytes;
    Wide text;
    bool well_formed = true;
};

Piece operator+(Piece a, const Piece& b) {
    return {a.bytes + b.bytes, a.text + b.text, a.well_formed && b.well_formed};
}

Piece Times(const Piece& piece, int count) {
    Piece result;
    for (int i = 0; i < count; ++i) result = result + piece;
    return result;
}

// Converts into buffers of exactly the size and of one less; units behind the text stay.
void ExpectConverted(const Piece& piece) {
    const int bytes = static_cast<int>(piece.bytes.size());
    const int units = static_cast<int>(piece.text.size());
    ASSERT_EQ(MultiByteToWideChar(CP_UTF8, 0, piece.bytes.data(), bytes, nullptr, 0), units);
    std::vector<WCHAR> exact(piece.text.size());
    ASSERT_EQ(MultiByteToWideChar(CP_UTF8, 0, piece.bytes.data(), bytes, exact.data(), units),
              units);
    ASSERT_TRUE(std::equal(exact.begin(), exact.end(), piece.text.begin()));
    std::vector<WCHAR> large(piece.text.size() + 40, 'Z');
    MultiByteToWideChar(CP_UTF8, 0, piece.bytes.data(), bytes, large.data(), units + 40);
    ASSERT_EQ(Wide(large.data(), large.size()), piece.text + Wide(40, 'Z'));
    // Wine hands out the first half of a pair.
    const bool ends_in_pair = units > 1 && (piece.text.back() & 0xFC00) == 0xDC00;
    if (units > 1 && !(ends_in_pair && test::UnderWine())) {
        ASSERT_EQ(
            MultiByteToWideChar(CP_UTF8, 0, piece.bytes.data(), bytes, exact.data(), units - 1), 0);
    }
    if (!piece.well_formed) return;
    std::string back(piece.bytes.size() + 40, 'Z');
    ASSERT_EQ(WideCharToMultiByte(CP_UTF8, 0, piece.text.data(), units, back.data(), bytes + 40,
                                  nullptr, nullptr),
              bytes);
    ASSERT_EQ(back, piece.bytes + std::string(40, 'Z'));
    ASSERT_EQ(
        WideCharToMultiByte(CP_UTF8, 0, piece.text.data(), units, nullptr, 0, nullptr, nullptr),
        bytes);
    if (bytes > 1) {
        ASSERT_EQ(WideCharToMultiByte(CP_UTF8, 0, piece.text.data(), units, back.data(), bytes - 1,
                                      nullptr, nullptr),
                  0);
    }
}

}  // namespace

TEST(TextConvert, AnyPieceConvertsAtAnyPlaceOfAnyRun) {
    const Piece runs[] = {{"x", TEXT("x")},
                          {"\xC3\xA9", TEXT("\u00e9")},
                          {"\xE5\x8D\xB0", TEXT("\u5370")},
                          {"ab\xD0\x96", TEXT("ab\u0416")}};
    const Piece pieces[] = {{"y", TEXT("y")},
                            {"\xDF\xBF", TEXT("\u07ff")},
                            {"\xE0\xA0\x80", TEXT("\u0800")},
                            {"\xED\x9F\xBF\xEF\xBF\xBF", TEXT("\uD7FF\uFFFF")},
                            {"\xF0\x9F\x98\x80", TEXT("\xD83D\xDE00")},
                            {std::string(1, '\0'), Wide(1, 0)},
                            {"\x80", TEXT("\uFFFD"), false},
                            {"\xC3", TEXT("\uFFFD"), false},
                            {"\xE2\x82", TEXT("\uFFFD"), false},
                            {"\xF0\x9F\x98", TEXT("\uFFFD"), false},
                            {"\xF5", TEXT("\uFFFD"), false}};
    for (const Piece& run : runs) {
        for (const Piece& piece : pieces) {
            for (int before = 0; before <= 17; ++before) {
                for (const int behind : {0, 1, 5, 15, 16, 17, 40}) {
                    ExpectConverted(Times(run, before) + piece + Times(run, behind));
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
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

TEST(TextConvert, APageSaysWhatItDoesNotHave) {
    char buffer[8] = {};
    BOOL used = FALSE;
    EXPECT_EQ(WideCharToMultiByte(1252, 0, TEXT("\u20ac\u00e9"), -1, buffer, 8, nullptr, &used), 3);
    EXPECT_STREQ(buffer, "\x80\xE9");
    EXPECT_FALSE(used);
    EXPECT_EQ(WideCharToMultiByte(1252, 0, TEXT("a\u4e00"), -1, buffer, 8, "#", &used), 3);
    EXPECT_STREQ(buffer, "a#");
    EXPECT_TRUE(used);
}
