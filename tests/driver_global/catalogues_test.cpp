// The paper and resolution catalogues over the sample resource file.
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

TEST_F(Catalogues, ASetNamesItsEntriesInOrderWithTheDefaultMarked) {
    ASSERT_TRUE(papers.Open(TEXT("papers"), TEXT("de"), UnicodeString()));
    EXPECT_EQ(papers.GetCount(), 5);
    EXPECT_EQ(papers.GetDefaultIndex(), 0);
    ASSERT_NE(papers.Get(3), nullptr);
    EXPECT_EQ(papers.Get(3)->Name, TEXT("Letter"));
    EXPECT_EQ(papers.Get(3)->Text, TEXT("US-Brief"));
    EXPECT_EQ(papers.Get(3)->X, 2159);
    EXPECT_EQ(papers.IndexOf(5), 4);
    EXPECT_EQ(papers.IndexOf(99), -1);
    EXPECT_EQ(papers.Get(5), nullptr);
    EXPECT_FALSE(papers.Open(TEXT("papers"), TEXT("de"), UnicodeString()));
}

TEST_F(Catalogues, AStarTakesAllEntriesOfTheList) {
    ASSERT_TRUE(papers.Open(TEXT("papers"), UnicodeString(), TEXT("color")));
    EXPECT_EQ(papers.GetCount(), 5);
    ASSERT_NE(papers.GetDefault(), nullptr);
    EXPECT_EQ(papers.GetDefault()->Id, 9);
}

TEST_F(Catalogues, UnknownSetsAreStandardAndUnknownListsAreNone) {
    ASSERT_TRUE(resolutions.Open(TEXT("resolutions"), TEXT("fr"), TEXT("no such set")));
    EXPECT_EQ(resolutions.GetCount(), 2);
    EXPECT_EQ(resolutions.IndexOf(204, 196), 1);
    EXPECT_EQ(resolutions.GetDefaultIndex(), 1);
    EXPECT_FALSE(papers.Open(TEXT("no such list"), UnicodeString(), UnicodeString()));
    EXPECT_EQ(papers.GetCount(), 0);
    EXPECT_EQ(papers.GetDefault(), nullptr);
}

TEST_F(Catalogues, ATextMissingInTheLanguageIsTheEnglishOne) {
    ASSERT_TRUE(resolutions.Open(TEXT("resolutions"), TEXT("de"), TEXT("color")));
    ASSERT_NE(resolutions.Get(1), nullptr);
    EXPECT_EQ(resolutions.Get(1)->Text, TEXT("Superfine (204 x 391)"));
}

TEST_F(Catalogues, TheBestFitIsTheSmallestPaperThatHoldsThePageElseTheLargest) {
    ASSERT_TRUE(papers.Open(TEXT("papers"), UnicodeString(), UnicodeString()));
    const int rows[][3] = {
        {2100, 2970, 9}, {1000, 1000, 11}, {2101, 2700, 1}, {2159, 3000, 5}, {2200, 4000, 12}};
    for (const auto& [width, height, id] : rows) {
        const int index = papers.IndexOfBestFit(width, height);
        ASSERT_NE(papers.Get(index), nullptr);
        EXPECT_EQ(papers.Get(index)->Id, id) << width << "x" << height;
    }
    papers.Close();
    EXPECT_EQ(papers.IndexOfBestFit(1, 1), -1);
}

TEST_F(Catalogues, AnEntryThatTheListLacksClosesTheCatalogue) {
    GetXmlRes()->ReadFile();
    GetXmlRes()
        ->FRoot->Find(TEXT("fax\\standard"), System::kCodePageUtf8)
        ->SetAttribute(TEXT("papers"), TEXT("A4,Gone"), System::kCodePageUtf8);
    ASSERT_TRUE(papers.Open(TEXT("papers"), UnicodeString(), UnicodeString()));
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

TEST_F(Catalogues, AStarOverAListWithoutEntriesIsNoCatalogue) {
    GetXmlRes()->ReadFile();
    GetXmlRes()->FRoot->FindChild(TEXT("papers"), System::kCodePageUtf8)->Clear();
    EXPECT_FALSE(papers.Open(TEXT("papers"), UnicodeString(), TEXT("color")));
    EXPECT_EQ(papers.GetCount(), 0);
}

}  // namespace
