// The scanner: character classes, code pages, positions at the edges.
#include "xml/char_finder.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>
#include <tuple>

#include "xml/xml_test.h"

using namespace std::string_literals;
using test::Utf8;

namespace {

class TOpenFinder : public TAsciiCharFinder {
  public:
    explicit TOpenFinder(std::string_view text)
        : TAsciiCharFinder(text.data(), static_cast<int>(text.size())) {}
    using TAsciiCharFinder::FPos;
    using TAsciiCharFinder::FStep;
};

TEST(CharFinder, TheCodePageComesFromMarkWishOrContent) {
    const std::tuple<std::string, int, int, int> rows[] = {{"<a/>", 65001, 65001, 0},
                                                           {"<a/>", 1252, 1252, 0},
                                                           {"\xEF\xBB\xBF<a/>", 0, 65001, 3},
                                                           {"\xFF\xFE<\0"s, 65001, 1200, 2},
                                                           {"<\0a"s, 0, 20127, 0},
                                                           {"\0<\0a"s, 20127, 1201, 0},
                                                           {"<\0\0\0a\0\0\0"s, 0, 12000, 0},
                                                           {"<\0\0\0a\0\0"s, 0, 20127, 0},
                                                           {"", 0, 20127, 0}};
    for (const auto& [bytes, wanted, code_page, position] : rows) {
        TOpenFinder finder(bytes);
        finder.CheckCodePage(static_cast<TCodePage>(wanted));
        EXPECT_EQ(finder.CodePage(), code_page);
        EXPECT_EQ(finder.Position(), position) << code_page;
    }
}

TEST(CharFinder, StepsAreTheLengthsOfCharacters) {
    TOpenFinder utf8("");
    utf8.CheckCodePage(System::kCodePageUtf8);
    const int edges[][2] = {{0x00, 1}, {0x7F, 1}, {0x80, 0}, {0xBF, 0}, {0xC0, 2}, {0xDF, 2},
                            {0xE0, 3}, {0xEF, 3}, {0xF0, 4}, {0xF7, 4}, {0xF8, 0}, {0xFF, 0}};
    for (const auto& edge : edges) EXPECT_EQ(utf8.FStep[edge[0]], edge[1]) << edge[0];
    TOpenFinder ansi("");
    ansi.CheckCodePage(System::kCodePageAnsi);
    EXPECT_EQ(ansi.FStep[0], 0);
    EXPECT_EQ(ansi.FStep[0x61], 1);
    EXPECT_EQ(ansi.FStep[0xA9], 1);
}

TEST(CharFinder, UnitsOfUtf16AreFoundByTheirLowByte) {
    TSearchSet set;
    set['<'] = 1;
    const std::string little = "x<\x3C\x01<\0y"s;
    TOpenFinder finder(little);
    finder.CheckCodePage(System::kCodePageUtf16);
    EXPECT_EQ(finder.FindW(&set), '<');
    EXPECT_EQ(finder.Position(), 4);
    EXPECT_EQ(finder.Find(&set), '<');
    finder.Skip(2);
    EXPECT_EQ(finder.Find(&set), 255);
    EXPECT_TRUE(finder.Eof());
    TOpenFinder bytes("<");
    EXPECT_EQ(bytes.FindW(&set), 65535);
    EXPECT_EQ(bytes.Find(&set), '<');
}

TEST(CharFinder, NothingOutsideTheBufferIsRead) {
    constexpr int kFar = std::numeric_limits<int>::max();
    TOpenFinder finder("abc");
    EXPECT_EQ(finder.Prev(), 0);
    EXPECT_EQ(finder.c(-kFar), 0);
    finder.FPos = 2;
    EXPECT_EQ(finder.b(kFar), 0);
    EXPECT_EQ(finder.Next(), 0);
    finder.BeginRead(-2);
    EXPECT_EQ(Utf8(finder.EndRead(kFar)), "abc");
    EXPECT_TRUE(finder.Read(2, 1).IsEmpty());
    finder.Skip(kFar);
    EXPECT_EQ(finder.Position(), 3);
    EXPECT_EQ(finder.Current(), 0);
    EXPECT_EQ(finder.Prev(), 'c');
}

}  // namespace
