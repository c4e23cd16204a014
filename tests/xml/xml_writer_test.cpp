// The writer: layout, escaping, encodings, and what it refuses to write.
#include "xml/xml_writer.h"

#include <gtest/gtest.h>

#include "mox_classes/containers/memory_stream.h"
#include "support/fresh_host_root.h"
#include "support/string_print.h"
#include "support/thrown_text.h"
#include "xml/xml_test.h"

using namespace std::string_literals;
using test::Parse;
using test::Utf8;

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;

std::string Bytes(const Classes::TMemoryStream& stream, int size) {
    return std::string(static_cast<const char*>(stream.GetMemory()),
                       static_cast<std::size_t>(size));
}

class TFullStream : public Classes::TMemoryStream {
    int Write(const void*, int) override { throw UnicodeString("full"); }
};

std::string Saved(TXmlNode& node, const WCHAR* unit = TEXT(""), const WCHAR* line = TEXT("")) {
    TXmlFormatter format(unit, line, 0);
    return Utf8(node.SaveToString(format));
}

TEST(XmlWriter, ABlockIsIndentedAndASingleLineStaysOne) {
    TXmlNode root;
    root.FName = TEXT("r");
    root.AddAttribute(TEXT("a"), TEXT("1"));
    root.SetChild(TEXT("c"), TEXT("x"), kUtf8);
    root.AddChild(TEXT("e"));
    EXPECT_EQ(Saved(root, TEXT("  "), TEXT("\r\n")),
              "<r a=\"1\">\r\n  <c>x</c>\r\n  <e/>\r\n</r>\r\n");
    EXPECT_EQ(Saved(root), "<r a=\"1\"><c>x</c><e/></r>");
    root.GetChild(0)->FTail = TEXT(" tail ");
    root.GetChild(0)->FValue = TEXT("one\ntwo");
    EXPECT_EQ(Saved(root, TEXT("\t"), TEXT("\n")),
              "<r a=\"1\">\n\t<c>one\ntwo\n\t</c>\ntail\t<e/>\n</r>\n");
}

TEST(XmlWriter, TextsAreTrimmedAndEscaped) {
    TXmlNode node;
    node.FName = TEXT("t");
    node.FValue = TEXT(" \t1 < 2 & \"'>\r\nnext\t\x1\xE9 \r\n");
    node.AddAttribute(TEXT("a"), TEXT("\r\n<a\r\nb>\x2 "));
    EXPECT_EQ(Saved(node),
              "<t a=\"&lt;a\nb&gt;\">1 &lt; 2 &amp; &quot;&apos;&gt;\nnext\t\x01\xC3\xA9</t>");
    node.Clear();
    node.FValue = TEXT("   ");
    EXPECT_EQ(Saved(node), "<t></t>");
    node.FValue = UnicodeString();
    node.FTail = TEXT("not written");
    EXPECT_EQ(Saved(node), "<t/>");
}

TEST(XmlWriter, TheLevelSelectsFormAndIndentation) {
    TXmlFormatter format(TEXT("ab"), TEXT(""), 2);
    EXPECT_EQ(Utf8(format.Indent()), "abab");
    EXPECT_EQ(format.IncLevel(-3), -1);
    EXPECT_TRUE(format.Indent().IsEmpty());
    EXPECT_EQ(format.IncLevel(-1), -1);
    format.Set(TEXT("ab"), TEXT(""), -2);
    EXPECT_EQ(format.GetLevel(), -1);
    TXmlNode node;
    node.FName = TEXT("pi");
    node.FValue = TEXT("not written");
    node.AddAttribute(TEXT("x"), TEXT("1"));
    EXPECT_EQ(Utf8(node.SaveToString(format)), "<?pi x=\"1\"?>");
    format.SetLevel(2147483647);
    EXPECT_EQ(format.IncLevel(1), 2147483647);
    EXPECT_THROW(format.Indent(), UnicodeString);
}

TEST(XmlWriter, AFreshDocumentIsADeclarationAndItsRoot) {
    TXmlDoc doc;
    doc.FRoot->FName = TEXT("r");
    EXPECT_EQ(Utf8(doc.SaveToString()), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><r/>");
    doc.LineBreak = TEXT("\n");
    doc.CodePage = System::kCodePageUtf16;
    EXPECT_EQ(Utf8(doc.SaveToString()), "<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<r/>\n");
}

TEST(XmlWriter, ADocumentThatCannotBeDeclaredIsNotWritten) {
    TXmlDoc doc;
    ASSERT_GT(Parse(doc, "<r/>"), 0);
    EXPECT_EQ(doc.CodePage, System::kCodePageAscii);
    EXPECT_TRUE(doc.SaveToString().IsEmpty());
    doc.CodePage = System::kCodePageAnsi;
    EXPECT_FALSE(doc.SaveToString().IsEmpty());
    TXmlDoc other;
    ASSERT_GT(Parse(other, "\xEF\xBB\xBF<?other?><?xml?><r/>"), 0);
    EXPECT_TRUE(other.SaveToString().IsEmpty());
}

TEST(XmlWriter, AFileIsNotTouchedByWhatCannotBeWritten) {
    const WCHAR* const name = TEXT("C:\\qv_writer_test.xml");
    const test::FreshHostRoot root;
    TXmlDoc doc;
    ASSERT_GT(Parse(doc, "<r/>"), 0);
    EXPECT_EQ(test::ThrownText([&] { doc.SaveToFile(name); }),
              TEXT("The document cannot be written in the code page 20127"));
    EXPECT_EQ(GetFileAttributesW(name), INVALID_FILE_ATTRIBUTES);
    doc.CodePage = kUtf8;
    doc.FRoot->FValue = UnicodeString(TEXT("a\0b"), 3);
    doc.SaveToFile(name);
    doc.FProlog->GetChild(0)->FName = TEXT("other");
    EXPECT_EQ(test::ThrownText([&] { doc.SaveToFile(name); }),
              TEXT("The document cannot be written: its first instruction is not \"xml\""));
    // A zero is written. The file has no byte-order mark, so it cannot be read back.
    TXmlDoc loaded;
    EXPECT_EQ(test::ThrownText([&] { loaded.LoadFromFile(name); }), TEXT("Invalid char found"));
    TXmlDoc named;
    named.CodePage = kUtf8;
    named.LoadFromFile(name);
    EXPECT_EQ(named.FRoot->FValue, doc.FRoot->FValue);
    DeleteFileW(name);
}

TEST(XmlWriter, TheEncodingOfAStreamFollowsTheCodePage) {
    const UnicodeString text(TEXT("a\xE9\x20AC"));
    const std::pair<int, std::string> rows[] = {{65001, "a\xC3\xA9\xE2\x82\xAC"},
                                                {0, "a\xC3\xA9\xE2\x82\xAC"},
                                                {1200, "a\0\xE9\0\xAC\x20"s},
                                                {1252, ""}};
    for (const auto& [code_page, bytes] : rows) {
        Classes::TMemoryStream stream;
        const int size = UnicodeStringToStream(&stream, text, static_cast<TCodePage>(code_page));
        EXPECT_EQ(Bytes(stream, size), bytes) << code_page;
        EXPECT_EQ(stream.GetSize(), size);
    }
}

// Pieces of a long text end anywhere but inside a surrogate pair. A text that is longer than the
// buffer may follow when the buffer is about to be written.
TEST(XmlWriter, ALongTextIsReadAsItWasWritten) {
    const UnicodeString plain = UnicodeString::StringOfChar(TEXT('x'), 200001);
    UnicodeString pairs = plain;
    for (int i = 2; i < pairs.Length(); i += 2) {
        pairs[i] = 0xD83D;
        pairs[i + 1] = 0xDE00;
    }
    for (const TCodePage code_page : {System::kCodePageUtf8, System::kCodePageUtf16}) {
        TXmlDoc doc;
        doc.CodePage = code_page;
        doc.FRoot->FName = TEXT("r");
        doc.FRoot->FValue = plain.SubString(1, 70000);
        doc.FRoot->AddChild(TEXT("c"))->FValue = plain;
        doc.FRoot->AddChild(TEXT("d"))->FValue = pairs;
        Classes::TMemoryStream stream;
        doc.SaveToStream(&stream);
        const int size = static_cast<int>(stream.GetSize());
        EXPECT_TRUE(code_page != kUtf8 || Bytes(stream, size) == Utf8(doc.SaveToString()));
        stream.SetPosition(0);
        TXmlDoc again;
        again.LoadFromStream(&stream);
        EXPECT_EQ(again.ParseResult(), size);
        EXPECT_TRUE(again.FRoot->GetChild(0)->FValue == plain);
        EXPECT_TRUE(again.FRoot->GetChild(1)->FValue == pairs);
        EXPECT_THROW(TXmlDoc().LoadFromStream(&stream), UnicodeString);
        doc.FRoot->FValue = UnicodeString();
        TFullStream full;
        TXmlFormatter format;
        EXPECT_THROW(doc.FRoot->SaveToStream(&full, format, code_page), UnicodeString);
        EXPECT_EQ(format.GetLevel(), 0);
    }
}

// The output for a text without blanks at its ends, written unit by unit.
std::string Escaped(const UnicodeString& text) {
    std::string out;
    for (const char octet : Utf8(text)) {
        if (octet == '\r') continue;
        out += octet == '<'    ? "&lt;"
               : octet == '&'  ? "&amp;"
               : octet == '\'' ? "&apos;"
                               : std::string(1, octet);
    }
    return out;
}

// Vectors take several units at a time and the rest in one step: every length, and every place of
// what ends a vector.
TEST(XmlWriter, AUnitIsWrittenTheSameWhereverItStands) {
    constexpr int kMostUnits = 26;
    const UnicodeString pieces[] = {TEXT("x"),
                                    TEXT("\xE9"),
                                    TEXT("\x7FF\x80"),
                                    TEXT("\x20AC"),
                                    TEXT("\xD83D\xDE00"),
                                    TEXT("\xD83Dy"),
                                    TEXT("\xDE00"),
                                    TEXT("\xFFFD\x800"),
                                    TEXT("\xE9<'\xE9&"),
                                    TEXT("\r"),
                                    TEXT("\t\x1"),
                                    UnicodeString(TEXT("\0"), 1),
                                    UnicodeString(TEXT("\0y\xE9"), 3)};
    for (const UnicodeString& middle : pieces) {
        for (int length = 0; length < kMostUnits; ++length) {
            for (int at = 0; at <= length; ++at) {
                const UnicodeString text = UnicodeString::StringOfChar(TEXT('a'), at) + middle +
                                           UnicodeString::StringOfChar(TEXT('b'), length - at) +
                                           TEXT("c");
                TXmlNode node;
                node.FName = TEXT("n") + text;
                node.AddAttribute(TEXT("k") + text, TEXT("v") + text);
                node.FValue = TEXT("t") + text;
                const std::string name = "n" + Utf8(text);
                const std::string expected = "<" + name + " k" + Utf8(text) + "=\"v" +
                                             Escaped(text) + "\">t" + Escaped(text) + "</" + name +
                                             ">";
                TXmlFormatter format;
                Classes::TMemoryStream stream;
                const int size = node.SaveToStream(&stream, format, kUtf8);
                ASSERT_EQ(Bytes(stream, size), expected) << "at " << at;
                ASSERT_EQ(Saved(node), expected) << "at " << at;
            }
        }
    }
}

// Both halves of a character may come from texts that follow each other, and a carriage return that
// is left out does not part them.
TEST(XmlWriter, HalvesOfACharacterMeet) {
    TXmlNode root;
    root.FName = TEXT("r");
    root.AddChild(TEXT("c"))->FTail = TEXT("\xD83D\r\xDE00 \xD83D");
    root.AddChild(TEXT("d"))->FTail = TEXT("\xD83D");
    root.SetChild(TEXT("c"), TEXT("x\xD83D"), kUtf8);
    TXmlFormatter format(TEXT("\xDE00"), TEXT("\r\n"), 0);
    Classes::TMemoryStream stream;
    const int size = root.SaveToStream(&stream, format, kUtf8);
    EXPECT_EQ(Bytes(stream, size),
              "<r>\r\n\xEF\xBF\xBD<c>x\xEF\xBF\xBD</c>\r\n\xF0\x9F\x98\x80 \xF0\x9F\x98\x80<d/>"
              "\r\n</r>\r\n");
}

}  // namespace
