// The paper and resolution catalogues over the sample resource file. The transcripts of qv papers
// and qv resolutions have what they list.
#include "driver_global/catalogues.h"

#include <gtest/gtest.h>

#include "support/clean_logger.h"
#include "support/source_folder.h"
#include "support/string_print.h"
#include "xml/xml_doc.h"
#include "xml/xml_resource.h"

namespace {

class Catalogues : public testing::Test {
  protected:
    Catalogues() {
        InitXmlRes((test::SourceFolder() + "/samples/qv_res.xml").c_str(), UnicodeString());
    }
    ~Catalogues() override { UninitXmlRes(); }

    test::CleanLogger logger;
    TQVPapers papers;
    TQVResolutions resolutions;
};

TEST_F(Catalogues, EntriesAreFoundByIndexAndNumber) {
    EXPECT_EQ(papers.GetDefault(), nullptr);
    EXPECT_EQ(papers.IndexOfBestFit(1, 1), -1);
    ASSERT_TRUE(papers.Open(TEXT("papers"), TEXT("de"), UnicodeString()));
    EXPECT_FALSE(papers.Open(TEXT("papers"), TEXT("de"), UnicodeString())) << "it is open";
    ASSERT_NE(papers.Get(3), nullptr);
    EXPECT_EQ(papers.Get(3)->Text, TEXT("US-Brief"));
    EXPECT_EQ(papers.IndexOf(5), 4);
    EXPECT_EQ(papers.IndexOf(99), -1);
    EXPECT_EQ(papers.Get(5), nullptr);
    papers.Close();
    EXPECT_EQ(papers.GetCount(), 0);
    ASSERT_TRUE(resolutions.Open(TEXT("resolutions"), TEXT("fr"), TEXT("no such set")));
    EXPECT_EQ(resolutions.IndexOf(204, 196), 1);
    EXPECT_EQ(resolutions.GetDefaultIndex(), 1);
}

TEST_F(Catalogues, AnEntryThatTheListLacksClosesTheCatalogue) {
    GetXmlRes()->ReadFile();
    GetXmlRes()
        ->FRoot->Find(TEXT("fax\\standard"), System::kCodePageUtf8)
        ->SetAttribute(TEXT("papers"), TEXT("A4,Gone"), System::kCodePageUtf8);
    ASSERT_TRUE(papers.Open(TEXT("papers"), UnicodeString(), UnicodeString()));
    EXPECT_EQ(papers.GetDefault(), nullptr);
    EXPECT_EQ(papers.GetCount(), 2) << "there is none, so nothing is read";
    EXPECT_EQ(papers.Get(0), nullptr);
    EXPECT_EQ(papers.GetCount(), 0);
    EXPECT_TRUE(papers.Open(TEXT("papers"), UnicodeString(), TEXT("color")));
}

TEST_F(Catalogues, AListThatIsMissingClosesTheCatalogue) {
    GetXmlRes()->ReadFile();
    const auto check = [](auto& catalogue, const WCHAR* list) {
        TXmlNode* const entries = GetXmlRes()->FRoot->FindChild(list, System::kCodePageUtf8);
        ASSERT_TRUE(catalogue.Open(list, UnicodeString(), UnicodeString()));
        entries->FName = TEXT("gone");
        EXPECT_FALSE(catalogue.ReadData());
        EXPECT_EQ(catalogue.GetCount(), 0);
        entries->FName = list;
        EXPECT_TRUE(catalogue.Open(list, UnicodeString(), UnicodeString()));
    };
    check(papers, TEXT("papers"));
    check(resolutions, TEXT("resolutions"));
}

TEST_F(Catalogues, AStarOverAListWithoutEntriesOpensWithoutEntries) {
    GetXmlRes()->ReadFile();
    GetXmlRes()->FRoot->FindChild(TEXT("papers"), System::kCodePageUtf8)->Clear();
    EXPECT_TRUE(papers.Open(TEXT("papers"), UnicodeString(), TEXT("color")));
    EXPECT_EQ(papers.Get(0), nullptr);
    EXPECT_EQ(papers.IndexOfBestFit(1, 1), -1);
}

}  // namespace
