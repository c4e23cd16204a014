// The parser: what it accepts, what it refuses and where, in every encoding.
#include <gtest/gtest.h>

#include "xml/xml_test.h"
#include "xml/xml_writer.h"

using namespace std::string_literals;
using test::Parse;
using test::Result;
using test::RootText;
using test::Utf8;

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;

TEST(XmlParser, ResultsArePositions) {
    const struct {
        std::string text;
        int result;
    } rows[] = {
        {"", 0},
        {"\xEF\xBB\xBF", 0},
        {"no tags", 0},
        {"<a/>", 4},
        {"<a/>junk<", 4},
        {"<a></a>", 7},
        {"<a >x</a >", 10},
        {"\xEF\xBB\xBF<a/>", 7},
        {"<?xml version=\"1.0\"?><!-- c -->", 0},
        {"<?xml?><a/>", 11},
        {"<!DOCTYPE a><a/>", 16},
        {"<!DOCTYPE a [<!ELEMENT a ANY>]><a/>", 35},
        {"<!--><a/>", 9},
        {"<!-- > -- -><b/> --><a/>", 24},
        {"<!-- open", 0},
        {"> <a/>", 6},
        {"<a><b></b></a>", 14},
        {"<a><b>text", 0},
        {"<a x=\"<\"/>", 10},
        {"<a x=\"1\"y=\"2\"/>", 15},
        {"<a x = 1 \"2\"/>", 14},
        // The one leniency: a name without '=' directly before the end of the tag.
        {"<a x>t</a>", 10},
        {"<a x/>", 6},
        {"<a x=\"1\" y />", 13},
        {"<?xml version?><a/>", 19},
        // Errors.
        {"<", -1},
        {"<a", -2},
        {"</a>", -3},
        {"<a></b>", -6},
        {"<a></a", -6},
        {"< a/>", -2},
        {"<=>", -1},
        {"<a/ >", -2},
        {"<a x=\"1\" / >", -9},
        {"<a x='1'/>", -9},
        {"<a x=\"1\"", -8},
        {"<a x=\"1", -7},
        {"<a x", -4},
        {"<a x y=\"1\"/>", -5},
        {"<a x=/>", -6},
        {"<a x=>t</a>", -5},
        {"<a =\"1\"/>", -3},
        {"<a<b/>", -2},
        {"<a\tx=\"1\"/>", -4},
        {"<a x=\"y>z\"/>", -7},
        {"<a>x>y</a>", -4},
        {"<a><b/>x></a>", -8},
        {"<a><b></b>x></a>", -11},
        {"<a>&lt&gt;</a>", -6},
        {"<a>&copy;</a>", -8},
        {"<a x=\"&copy;\"/>", -11},
        {"<?xml?></xml>", -12},
        {"<?>", -2},
        {"<?xml >", -6},
        {"<?xml version=\"1\">", -17},
        {"<?xml version=>?><a/>", -14},
        {"<a><?pi?></a>", -3},
    };
    for (const auto& row : rows) EXPECT_EQ(Result(row.text), row.result) << row.text;
}

TEST(XmlParser, PositionsOfDecodedInputAreThoseOfItsBytes) {
    const auto wide = [](std::string_view text, int width, bool big, std::string mark) {
        for (const char c : text) {
            std::string unit(static_cast<std::size_t>(width), '\0');
            unit[big ? unit.size() - 1 : 0] = c;
            mark += unit;
        }
        return mark;
    };
    for (const auto& [text, at] : {std::pair{"<a>x</a> ", 8}, {"<a></b>", -6}, {"<abcd>", 0}}) {
        EXPECT_EQ(Result(wide(text, 2, false, "\xFF\xFE")),
                  at == 0 ? 0 : at * 2 + (at < 0 ? -2 : 2));
        EXPECT_EQ(Result(wide(text, 2, true, "\xFE\xFF")),
                  at == 0 ? 0 : at * 2 + (at < 0 ? -2 : 2));
        EXPECT_EQ(Result(wide(text, 4, false, "\xFF\xFE\0\0"s)),
                  at == 0 ? 0 : at * 4 + (at < 0 ? -4 : 4));
        EXPECT_EQ(Result(wide(text, 4, true, "\0\0\xFE\xFF"s)),
                  at == 0 ? 0 : at * 4 + (at < 0 ? -4 : 4));
        EXPECT_EQ(Result(wide(text, 2, false, "")), at * 2);
        EXPECT_EQ(Result(wide(text, 4, true, "")), at * 4);
    }
}

TEST(XmlParser, WideInputIsDecoded) {
    // <a>, U+00E9, U+1F600, an unpaired surrogate, </a> and half a unit.
    const std::string text = "\xFF\xFE<\0a\0>\0\xE9\0\x3D\xD8\x00\xDE\x00\xD8<\0/\0a\0>\0x"s;
    TXmlDoc doc;
    EXPECT_EQ(Parse(doc, text), 24);
    EXPECT_EQ(doc.CodePage, System::kCodePageUtf16);
    EXPECT_EQ(Utf8(doc.FRoot->FValue), "\xC3\xA9\xF0\x9F\x98\x80\xEF\xBF\xBD");
    // The same bytes without a mark, but with the encoding named.
    TXmlDoc named;
    named.CodePage = System::kCodePageUtf16;
    EXPECT_EQ(Parse(named, text.substr(2)), 22);
    EXPECT_EQ(Result("\xFF\xFE<"), 0);
}

TEST(XmlParser, TextIsTrimmedAndReferencesDecoded) {
    const struct {
        const char* inside;
        const char* text;
    } rows[] = {
        {" \t x y \r\n", "x y"},
        {"  ", ""},
        {"&amp;&AMP;&Amp;", "&&&"},
        {"&gt;&lt;&quot;&apos;", "><\"'"},
        {"a&nbsp;b&nbsp;", "a b"},
        {"&#65;&#x41;&#X41;", "AA)"},
        {"a&#0;b", "ab"},
        {"&#x1F600;&#xE9;", "\xF0\x9F\x98\x80\xC3\xA9"},
        {"&#x110000;", "\xEF\xBF\xBD"},
        {"&#4294967361;", "A"},
        {"&#x000000041;", ""},
        {"&# 6-5 ;", "A"},
        {"fish & chips", "fish & chips"},
        {"\"quoted\"; and;", "\"quoted\"; and;"},
        {"\xC3\xA9\xE2\x82\xAC", "\xC3\xA9\xE2\x82\xAC"},
        {"text<!-- c -->lost", "text"},
        {"<![CDATA[lost]]<b/", "not parsed"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(RootText("\xEF\xBB\xBF<a>"s + row.inside + "</a>"), row.text) << row.inside;
    }
    TXmlDoc doc;
    ASSERT_GT(Parse(doc, "<a><b/> x <c>y</c> &lt; </a>"), 0);
    EXPECT_EQ(Utf8(doc.FRoot->GetChild(0)->FTail), "x");
    EXPECT_EQ(Utf8(doc.FRoot->GetChild(1)->FTail), "<");
    EXPECT_TRUE(doc.FRoot->FValue.IsEmpty());
}

TEST(XmlParser, AttributeValuesAreNotTrimmedAndTheFirstCounts) {
    TXmlDoc doc;
    ASSERT_GT(Parse(doc, "<?xml version=\"1.0\"?><a x=\" 1 \" x=\"2\" y=\"&amp;<;\" z=\"&\" w/>"),
              0);
    EXPECT_EQ(Utf8(doc.FProlog->GetChild(0)->FName), "xml");
    EXPECT_EQ(doc.FProlog->GetChild(0)->AttributeCount(), 1);
    EXPECT_EQ(doc.FRoot->AttributeCount(), 3);
    EXPECT_EQ(Utf8(doc.FRoot->AttrGetString(TEXT("x"), kUtf8)), " 1 ");
    EXPECT_EQ(Utf8(doc.FRoot->AttrGetString(TEXT("y"), kUtf8)), "&<;");
    EXPECT_EQ(Utf8(doc.FRoot->AttrGetString(TEXT("z"), kUtf8)), "&");
}

TEST(XmlParser, ABrokenDocumentKeepsWhatWasRead) {
    TXmlDoc doc;
    EXPECT_LT(Parse(doc, "<a><b x=\"1\">t</b><c>&lt;&nope;"), 0);
    EXPECT_EQ(Utf8(doc.FRoot->GetChild(0)->FValue), "t");
    EXPECT_EQ(Utf8(doc.FRoot->GetChild(1)->FValue), "<");
    doc.Clear();
    EXPECT_TRUE(doc.IsDocEmpty());
    EXPECT_EQ(Utf8(doc.FRoot->FName), "a");
    EXPECT_LT(Parse(doc, "</c>"), 0);
}

TEST(XmlParser, AByteThatStartsNoCharacterThrows) {
    TXmlDoc doc;
    try {
        Parse(doc, "\xEF\xBB\xBF<a>\xA9</a>");
        FAIL() << "no exception";
    } catch (const UnicodeString& message) {
        EXPECT_EQ(Utf8(message), "Invalid char found");
    }
    EXPECT_EQ(doc.ParseResult(), -6);
    EXPECT_EQ(RootText("<a>\xA9 </a>"), "\xEF\xBF\xBD");
    EXPECT_THROW(Result("<a>\0</a>"s), UnicodeString);
    EXPECT_EQ(Result("\xEF\xBB\xBF<a>\xF0"), 0);
}

TEST(XmlParser, StringsAreWrappedIntoARootOnDemand) {
    TXmlDoc doc;
    EXPECT_TRUE(doc.LoadFromString(TEXT("<a/><b/>"), TEXT("list")));
    EXPECT_EQ(doc.FRoot->ChildCount(), 2);
    EXPECT_EQ(doc.CodePage, kUtf8);
    EXPECT_FALSE(TXmlDoc().LoadFromString(TEXT("no elements"), UnicodeString()));
    const TXmlDoc built(TEXT("<x>1</x>"));
    EXPECT_EQ(Utf8(built.FRoot->FValue), "1");
    EXPECT_GT(built.ParseResult(), 0);
}

TEST(XmlParser, DepthIsLimitedByMemoryAlone) {
    constexpr int kDepth = 300000;
    std::string text;
    for (int i = 0; i < kDepth; ++i) text += "<a>";
    TXmlDoc doc;
    EXPECT_EQ(Parse(doc, text), 0);
    doc.CodePage = kUtf8;
    const UnicodeString saved = doc.SaveToString();
    EXPECT_EQ(saved.Length(), 38 + (kDepth - 1) * 7 + 4);
    const TXmlNode* node = doc.FRoot;
    int depth = 0;
    for (; node != nullptr; node = node->FindChild(TEXT("a"), kUtf8)) ++depth;
    EXPECT_EQ(depth, kDepth);
}

TEST(XmlParser, EqualNamesShareABuffer) {
    TXmlDoc doc;
    ASSERT_GT(Parse(doc, "<list><item n=\"1\"/><item n=\"2\"/></list>"), 0);
    EXPECT_EQ(doc.FRoot->GetChild(0)->FName.data(), doc.FRoot->GetChild(1)->FName.data());
}

}  // namespace
