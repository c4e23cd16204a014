// The parser: what it accepts, what it refuses and where, in every encoding.
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "xml/xml_test.h"
#include "xml/xml_writer.h"

using namespace std::string_literals;
using test::Parse;
using test::Result;
using test::RootText;
using test::Utf8;

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;

// The result is the place of the mark: the end of the root, or the fault (below 0).
TEST(XmlParser, ResultsArePositions) {
    for (const char* text : {"", "\xEF\xBB\xBF", "no tags", "<!-- open", "<a><b>text",
                             "<?xml version=\"1.0\"?><!-- c -->"}) {
        EXPECT_EQ(Result(text), 0) << text;
    }
    const auto check = [](std::string text, int sign) {
        const std::size_t mark = text.find('|');
        EXPECT_EQ(Result(text.erase(mark, 1)), sign * static_cast<int>(mark)) << text;
    };
    for (const char* accepted :
         {"<a/>|", "<a/>|junk<", "<a></a>|", "<a >x</a >|", "\xEF\xBB\xBF<a/>|", "<?xml?><a/>|",
          "<!DOCTYPE a><a/>|", "<!--><a/>|", "> <a/>|", "<a><b></b></a>|", "<a x=\"<\"/>|",
          "<a x=\"1\"y=\"2\"/>|", "<a x = 1 \"2\"/>|", "<a x>t</a>|", "<a x/>|", "<a x=\"1\" y />|",
          "<?xml version?><a/>|", "<!DOCTYPE a [<!ELEMENT a ANY>]><a/>|",
          "<!-- > -- -><b/> --><a/>|"}) {
        check(accepted, 1);
    }
    for (const char* refused_tag :
         {"<|", "<a|", "</a|>", "<a></b|>", "<a></a|", "< |a/>", "<|=>", "<a|/ >",
          "<a x=\"1\" |/ >", "<a x='1'/|>", "<a x=\"1\"|", "<a x=\"1|", "<a x|", "<a x |y=\"1\"/>",
          "<a x=/|>", "<a x=|>t</a>"}) {
        check(refused_tag, -1);
    }
    for (const char* refused :
         {"<a |=\"1\"/>", "<a|<b/>", "<a\tx|=\"1\"/>", "<a x=\"y|>z\"/>", "<a>x|>y</a>",
          "<a><b/>x|></a>", "<a><b></b>x|></a>", "<a>&lt|&gt;</a>", "<a>&copy|;</a>",
          "<a x=\"&copy|;\"/>", "<?xml?></xml|>", "<?|>", "<?xml |>", "<?xml version=\"1\"|>",
          "<a>|<?pi?></a>", "<?xml version=|>?><a/>"}) {
        check(refused, -1);
    }
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
    const std::tuple<int, bool, std::string> encodings[] = {
        {2, false, "\xFF\xFE"},     {2, true, "\xFE\xFF"}, {4, false, "\xFF\xFE\0\0"s},
        {4, true, "\0\0\xFE\xFF"s}, {2, false, ""},        {4, true, ""}};
    for (const auto& [width, big, mark] : encodings) {
        const int before = static_cast<int>(mark.size());
        EXPECT_EQ(Result(wide("<a>x</a> ", width, big, mark)), 8 * width + before);
        EXPECT_EQ(Result(wide("<a></b>", width, big, mark)), -6 * width - before);
        EXPECT_EQ(Result(wide("<abcd>", width, big, mark)), 0);
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
    const std::pair<const char*, const char*> rows[] = {
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
        {"<![CDATA[lost]]<b/", "not parsed"}};
    for (const auto& [inside, text] : rows) {
        EXPECT_EQ(RootText("\xEF\xBB\xBF<a>"s + inside + "</a>"), text) << inside;
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

TEST(XmlParser, ATreeThatIsGoneIsNotFilledAnyMore) {
    TXmlDoc doc;
    const auto open = [&] { return Parse(doc, "<a><b><c>"); };
    EXPECT_EQ(open(), 0);
    EXPECT_EQ(Parse(doc, "<d/>"), 0);
    EXPECT_EQ(doc.FRoot->Find(TEXT("b\\c"), kUtf8)->ChildCount(), 1) << "the open element";
    doc.FRoot->Clear();
    EXPECT_EQ(Parse(doc, "<d/>"), 0);
    ASSERT_EQ(doc.FRoot->ChildCount(), 1);
    EXPECT_EQ(open(), 0);
    delete std::exchange(doc.FRoot, new TXmlNode);
    EXPECT_EQ(Parse(doc, "<e/>"), 0);
    EXPECT_EQ(doc.FRoot->ChildCount(), 1);
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
    TXmlDoc kept;
    EXPECT_THROW(Parse(kept, "\xEF\xBB\xBF<a>one &amp; two & \xA9</a>"), UnicodeString);
    EXPECT_EQ(Utf8(kept.FRoot->FValue), "one & two ");
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
