// The resource file: texts by domain, number and language, and the life of the document.
#include "xml/xml_resource.h"

#include <gtest/gtest.h>

#include "mox_classes/containers/streams.h"
#include "support/clean_logger.h"
#include "support/fresh_host_root.h"
#include "xml/xml_test.h"

using test::Utf8;

namespace {

const WCHAR* const kFile = TEXT("C:\\xml_resource_test.xml");
const WCHAR* const kMissing = TEXT("C:\\xml_resource_missing.xml");

class XmlResource : public testing::Test {
  protected:
    ~XmlResource() override {
        UninitXmlRes();
        SetLanguage(language_);
        DeleteFileW(kFile);
    }

    static void Write(std::string_view text) {
        Classes::TFileStream stream(kFile, Classes::TFileStream::kCreate);
        stream.WriteBuffer(text.data(), static_cast<int>(text.size()));
    }

    static std::string Text(const WCHAR* domain, ULONG id) {
        UnicodeString text(TEXT("none"));
        ResStringLookup(GetXmlRes(), domain, id, &text);
        return Utf8(text);
    }

  private:
    test::FreshHostRoot root_;
    test::CleanLogger logger_;
    UnicodeString language_ = GetLanguage();
};

TEST_F(XmlResource, ATextIsFoundInTheLanguageOrInEnglish) {
    Write(
        "<any><mox><log_file><d20 en=\"open\" de=\"auf\"/></log_file>"
        "<other format=\"msg%03d\"><msg007 en=\"seven\"/></other></mox></any>");
    EXPECT_EQ(GetXmlRes(), nullptr);
    InitXmlRes(kMissing, kFile);
    ASSERT_NE(GetXmlRes(), nullptr);
    const TXmlDoc* document = GetXmlRes();
    InitXmlRes(kMissing, kMissing);
    EXPECT_EQ(GetXmlRes(), document);
    SetLanguage(TEXT("de"));
    EXPECT_EQ(Text(TEXT("log_file"), 20), "auf");
    SetLanguage(TEXT("fr"));
    EXPECT_EQ(Text(TEXT("log_file"), 20), "open");
    EXPECT_EQ(Text(TEXT("other"), 7), "seven");
    EXPECT_EQ(Text(TEXT("log_file"), 21), "none");
    EXPECT_EQ(Text(TEXT("missing"), 20), "none");
    test::CleanLogger::Logger().Init();
    UninitXmlRes();
    EXPECT_EQ(GetXmlRes(), document);
    test::CleanLogger::Logger().Release();
    UninitXmlRes();
    EXPECT_EQ(GetXmlRes(), nullptr);
}

TEST_F(XmlResource, AFormatThatAsksForOtherArgumentsIsNotUsed) {
    for (const char* format : {"%s", "%n%d", "%d%d", "%*d", "plain", "%99999d", "%I64d", "%"}) {
        Write("<r><mox><x format=\"" + std::string(format) +
              "\"><d5 en=\"default\"/><plain en=\"p\"/></x></mox></r>");
        InitXmlRes(kFile, kMissing);
        EXPECT_EQ(Text(TEXT("x"), 5), "default") << format;
        UninitXmlRes();
    }
}

TEST_F(XmlResource, AFileThatIsMissingEmptyOrBrokenGivesNoText) {
    InitXmlRes(kMissing, kMissing);
    EXPECT_EQ(Text(TEXT("x"), 5), "none");
    EXPECT_EQ(GetXmlRes()->ReadFile(), -1);
    UninitXmlRes();
    for (const char* text : {"", "no xml", "<r><mox><y/>", "\xEF\xBB\xBF<r>\xA9<mox/></r>"}) {
        Write(text);
        InitXmlRes(kFile, kMissing);
        EXPECT_EQ(Text(TEXT("x"), 5), "none");
        EXPECT_EQ(Text(TEXT("x"), 5), "none");
        UninitXmlRes();
    }
}

TEST_F(XmlResource, TheFileIsReadOnce) {
    Write("<r><a/></r>");
    TXmlDoc doc;
    EXPECT_EQ(doc.ReadFile(), -1);
    ASSERT_TRUE(doc.OpenFile(kFile));
    EXPECT_EQ(doc.ReadFile(), 11);
    EXPECT_EQ(doc.ReadFile(), 0);
    EXPECT_EQ(doc.FRoot->ChildCount(), 1);
    doc.CloseFile();
    EXPECT_EQ(doc.ReadFile(), -1);
    TXmlDoc loaded;
    loaded.LoadFromFile(kFile);
    EXPECT_EQ(loaded.ParseResult(), 11);
    EXPECT_THROW(loaded.LoadFromFile(kMissing), UnicodeString);
    EXPECT_FALSE(doc.OpenFile(kMissing));
}

}  // namespace
