// The parser: the tree that it makes. documents_test.cpp has what it accepts and refuses.
#include <gtest/gtest.h>

#include <utility>

#include "support/thrown_text.h"
#include "xml/xml_test.h"
#include "xml/xml_writer.h"

using namespace std::string_literals;
using test::Parse;
using test::Utf8;

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;

TEST(XmlParser, TheTreeKeepsWhatASavedDocumentDoesNotShow) {
    TXmlDoc doc;
    ASSERT_GT(Parse(doc, "<?xml version=\"1.0\"?><a x=\" 1 \"><b/> x <c>y</c></a>"), 0);
    EXPECT_EQ(Utf8(doc.FProlog->GetChild(0)->FName), "xml");
    EXPECT_EQ(doc.FProlog->GetChild(0)->AttributeCount(), 1);
    EXPECT_EQ(Utf8(doc.FRoot->AttrGetString(TEXT("x"), kUtf8)), " 1 ");
    EXPECT_EQ(Utf8(doc.FRoot->GetChild(0)->FTail), "x");
    // UTF-16 without a mark, but with the encoding named.
    TXmlDoc named;
    named.CodePage = System::kCodePageUtf16;
    EXPECT_EQ(Parse(named, "<\0a\0/\0>\0"s), 8);
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

TEST(XmlParser, AByteThatStartsNoCharacterThrowsBehindWhatWasRead) {
    TXmlDoc kept;
    EXPECT_EQ(test::ThrownText([&] { Parse(kept, "\xEF\xBB\xBF<a>one &amp; two & \xA9</a>"); }),
              TEXT("Invalid char found"));
    EXPECT_EQ(Utf8(kept.FRoot->FValue), "one & two ");
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
