// Faults as people read them: reason, line, column and the line with a caret.
#include "xml/xml_source_location.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "xml/xml_test.h"

namespace {

using test::Utf8;

std::string Describe(const std::string& bytes, TXmlSourceLocation* place = nullptr) {
    TXmlDoc doc;
    try {
        test::Parse(doc, bytes);
    } catch (const UnicodeString&) {
    }
    return Utf8(DescribeXmlFault(doc, bytes.data(), static_cast<int>(bytes.size()), place));
}

// The fault without place and lines.
std::string Reason(const std::string& bytes) {
    const std::string text = Describe(bytes);
    const std::size_t from = text.find(": ") + 2;
    return text.substr(from, text.find('\n') - from);
}

std::string Wide(const std::u16string& text, bool big_endian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += big_endian ? high : low;
        bytes += big_endian ? low : high;
    }
    return bytes;
}

TEST(XmlPlace, EveryFaultHasItsReason) {
    const std::pair<std::string, std::string> rows[] = {
        {"<a><?b?></a>", "an instruction stands behind the root's start tag"},
        {"<?xml version=\"1.0\">", "the instruction 'xml' does not end with '?>'"},
        {"</a>", "the end tag closes no element"},
        {"<a></a <", "the end tag does not end with '>'"},
        {"<a>< b></a>", "the tag has no name"},
        {"<a b='1'/>", "the value of 'b' is not in double quotes"},
        {"<a b=\"1\" c d=\"2\"/>", "the attribute 'c' has no '='"},
        {"<a/ >", "the tag does not end with '>' or '/>'"},
        {"<a b=\"1\" ", "the tag has no end"},
        {"<a>1 > 2</a>", "'>' must be written '&gt;' here"},
        {"<a>&copy;</a>", "unknown reference '&copy;'"},
        {"<a>&b &c;</a>", "'&' stands inside a reference; write '&amp;'"},
        {"<a><b>", "'b' has no end tag (opened at line 1, column 4)"},
        {"<!-- -->", "there is no element"},
        {"<a", "the tag has no end"},
        {"<a b", "the tag has no end"},
        {"<a b=", "the tag has no end"},
        {"<?xml", "the tag has no end"},
        {"<a =\"1\"/>", "the attribute has no name"},
        {"<a\tx=\"1\"/>", "a space must follow the name 'a', not a tab or a line break"},
        {"<?xml\nversion=\"1.0\"?>",
         "a space must follow the name 'xml', not a tab or a line break"},
    };
    for (const auto& [input, reason] : rows) EXPECT_EQ(Reason(input), reason) << input;
    EXPECT_EQ(Reason(Wide(u"\xFEFF<a>", true)), "'a' has no end tag (opened at line 1, column 1)");
    for (const char* accepted : {"<a/>", "<a x/>", "<?xml version?><a/>"}) {
        TXmlDoc doc;
        EXPECT_GT(test::Parse(doc, accepted), 0);
        EXPECT_TRUE(doc.Fault().IsEmpty()) << accepted;
    }
}

TEST(XmlPlace, ColumnsCountCharactersInEveryEncoding) {
    // A tab, two-, three- and four-byte characters, then the fault.
    const std::u16string text = u"<a>\r\n\t\u00E9\u20AC\U0001F4E0>";
    const std::string utf8 = "<a>\r\n\t\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\xA0>";
    const std::string shown =
        "line 2, column 5: '>' must be written '&gt;' here\n"
        "\t\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\xA0>\n\t   ^";
    EXPECT_EQ(Describe(utf8), shown);
    EXPECT_EQ(Describe("\xEF\xBB\xBF" + utf8), shown);
    EXPECT_EQ(Describe(Wide(u"\xFEFF" + text, false)), shown);
    EXPECT_EQ(Describe(Wide(u"\xFEFF" + text, true)), shown);
    EXPECT_EQ(Describe(Wide(text, false)), shown);
    TXmlSourceLocation place;
    Describe("<a>\r\r>", &place);
    EXPECT_EQ(place.line, 3);
    EXPECT_EQ(place.column, 1);
}

TEST(XmlPlace, WhatIsShownIsHarmless) {
    EXPECT_EQ(Describe("<a>\x1B[2J\x7F\xE2\x80\xAE\xC2\x9B\xFF>"),
              "line 1, column 12: '>' must be written '&gt;' here\n"
              "<a>\xEF\xBF\xBD[2J\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD>\n"
              "           ^");
}

TEST(XmlPlace, ALongLineIsCutAroundThePlace) {
    const std::string dots(500, '.');
    EXPECT_EQ(Describe("<a>" + dots + ">" + dots),
              "line 1, column 504: '>' must be written '&gt;' here\n..." + dots.substr(0, 60) +
                  ">" + dots.substr(0, 39) + "...\n" + std::string(63, ' ') + "^");
    std::string wide;
    for (int i = 0; i < 500; ++i) wide += "\xE2\x82\xAC";
    EXPECT_EQ(Describe("<a>" + wide + ">"),
              "line 1, column 504: '>' must be written '&gt;' here\n..." + wide.substr(0, 180) +
                  ">\n" + std::string(63, ' ') + "^");
}

}  // namespace
