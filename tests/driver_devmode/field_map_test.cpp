// Every field by name: XML and text forms, ranges, previous values.
#include "driver_devmode/field_map.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "driver_devmode/qvdm.h"

namespace {

using Classes::TStringList;
using System::kCodePageUtf8;

std::string Narrow(const UnicodeString& text) {
    std::string out;
    for (int i = 1; i <= text.Length(); ++i) out += static_cast<char>(text[i]);
    return out;
}

class FieldMap : public testing::Test {
  protected:
    // Sets one field by its dotted name; the result is the previous value, or "-" when none was
    // recorded.
    std::string Set(const char* name, const char* value) {
        TStringList items;
        items.Add(name);
        items.Add(value);
        const std::string before = Narrow(settings.FromStrings(&items, 0, TEXT(" ")));
        return before.empty() ? "-" : before.substr(before.find('=') + 1);
    }
    std::string Text(const UnicodeString& path) {
        TXmlNode node;
        settings.ToXmlNode(&node);
        const TXmlNode* found = node.Find(path, kCodePageUtf8);
        return found == nullptr ? "(none)" : Narrow(found->FValue);
    }

    TQVDM settings;
};

TEST_F(FieldMap, AFreshBlockReadsAsItsDocumentedTexts) {
    EXPECT_EQ(Text(TEXT("dmOrientation")), "PORTRAIT");
    EXPECT_EQ(Text(TEXT("dmPaperSize")), "A4");
    EXPECT_EQ(Text(TEXT("exDialog\\Mode")), "INTERACTIVE");
    EXPECT_EQ(Text(TEXT("exFax\\PaperSize")), "0");
    EXPECT_EQ(Text(TEXT("exFax\\Resolution")), "204,196");
    EXPECT_EQ(Text(TEXT("exOut\\UseSerial")), "True");
    EXPECT_EQ(Text(TEXT("exIPO\\DitherMethod")), "PD256");
    EXPECT_EQ(Text(TEXT("exIPO\\CP3")), "255,255");
    EXPECT_EQ(Text(TEXT("exIPO\\ColorMixer")), "30,59,11");
    for (const WCHAR* unlisted :
         {TEXT("dmDeviceName"), TEXT("dmSize"), TEXT("exID"), TEXT("DeviceName")}) {
        EXPECT_EQ(Text(unlisted), "(none)");
    }
}

TEST_F(FieldMap, ValuesAreTakenByNameByPrefixedNameAndByNumber) {
    EXPECT_EQ(Set("dmOrientation", "landscape"), "PORTRAIT");
    EXPECT_EQ(Set("dmOrientation", "DMORIENT_PORTRAIT"), "LANDSCAPE");
    EXPECT_EQ(Set("dmOrientation", "2"), "PORTRAIT");
    EXPECT_EQ(Set("dmOrientation", "sideways"), "-");
    EXPECT_EQ(settings.GetDM()->dmOrientation, 2);
    EXPECT_EQ(Set("dmPrintQuality", "-4"), "0");
    EXPECT_EQ(Text(TEXT("dmPrintQuality")), "HIGH");
}

TEST_F(FieldMap, ElementsAreSetOneByOneAndAFailedOneFailsTheField) {
    EXPECT_EQ(Set("exFax.Resolution", "100"), "204,196");
    EXPECT_EQ(Text(TEXT("exFax\\Resolution")), "100,196");
    EXPECT_EQ(Set("exFax.Resolution", "204,70000"), "-");
    EXPECT_EQ(Text(TEXT("exFax\\Resolution")), "204,196");
    EXPECT_EQ(Set("exIPO.ColorMixer", "300,0,0"), "-");
    EXPECT_EQ(Text(TEXT("exIPO\\ColorMixer")), "30,0,0");
}

TEST_F(FieldMap, NumbersKeepToTheRangeOfTheirElement) {
    struct {
        const char* name;
        const char* value;
        const char* previous;
    } const cases[] = {
        {"dmCopies", " 12 pages", "1"},   {"dmCopies", "none", "12"},
        {"dmCopies", "32768", "-"},       {"dmFields", "4294967295", "527"},
        {"dmFields", "-1", "4294967295"}, {"dmFields", "4294967296", "-"},
        {"exIPO.Contrast", "-128", "5"},  {"exIPO.Contrast", "128", "-"},
        {"dmLogPixels", "65536", "-"},    {"dmFields", "99999999999999999999999", "-"},
    };
    settings.GetDM()->dmFields = 527;
    for (const auto& c : cases)
        EXPECT_EQ(Set(c.name, c.value), c.previous) << c.name << "=" << c.value;
}

TEST_F(FieldMap, TheIdentifierIsPlainTextThatEndsBeforeItsZero) {
    EXPECT_EQ(Set("exID", "A text that is far too long"), "\"QV DEVMODEex\"");
    EXPECT_EQ(std::memcmp(settings.GetDM()->exID, "A text that i", 13), 0);
    EXPECT_EQ(int{settings.GetDM()->exVersion}, 263);
}

TEST_F(FieldMap, XmlSetsGroupsAndRecordsPreviousValues) {
    TXmlNode request;
    TXmlNode result;
    request.SetChild(TEXT("dmCopies"), TEXT("2"), kCodePageUtf8);
    request.SetChild(TEXT("noSuchField"), TEXT("2"), kCodePageUtf8);
    request.AddChild(TEXT("exOut"))->SetChild(TEXT("UseSerial"), TEXT("false"), kCodePageUtf8);
    request.FindChild(TEXT("exOut"), kCodePageUtf8)
        ->SetChild(TEXT("Directory"), TEXT("D:\\in"), kCodePageUtf8);
    settings.Directory = TEXT("C:\\was");
    EXPECT_TRUE(settings.FromXmlNode(&request, &result));
    EXPECT_EQ(settings.GetDM()->dmCopies, 2);
    EXPECT_EQ(settings.GetDM()->exOut.UseSerial, 0);
    EXPECT_EQ(Narrow(result.ChildGetText(TEXT("dmCopies"), kCodePageUtf8)), "1");
    EXPECT_EQ(Narrow(result.Find(TEXT("exOut\\UseSerial"), kCodePageUtf8)->FValue), "True");
    EXPECT_EQ(result.FindChild(TEXT("noSuchField"), kCodePageUtf8), nullptr);
    EXPECT_EQ(TQVDM(settings.GetDM()).Directory, UnicodeString(TEXT("D:\\in")));
}

TEST_F(FieldMap, DeepNestingKeepsTheInnermostGroupAndNeedsNoStack) {
    TXmlNode request;
    TXmlNode* at = &request;
    for (int i = 0; i < 100000; ++i) at = at->AddChild(TEXT("exOut"));
    at->SetChild(TEXT("UseSerial"), TEXT("0"), kCodePageUtf8);
    settings.FromXmlNode(&request, nullptr);
    EXPECT_EQ(settings.GetDM()->exOut.UseSerial, 0);
}

TEST_F(FieldMap, FormNamesLastOnlyUnderTheWrappersName) {
    Set("dmFormName", "Lost");
    EXPECT_EQ(Text(TEXT("dmFormName")), "A4");
    Set("FormName", "Kept");
    EXPECT_EQ(Text(TEXT("dmFormName")), "Kept");
}

TEST_F(FieldMap, TextFormReadsBackWhatItWrites) {
    settings.Directory = TEXT("C:\\my faxes");
    settings.FileName = TEXT("a=b");
    settings.Encode();
    const std::string text = Narrow(settings.ToString(TEXT(" "), 34));
    EXPECT_EQ(text.find("exID=\"QV DEVMODEex\" exVersion=263 exDialog.Mode=INTERACTIVE"), 0u);
    EXPECT_NE(text.find("exFax.Resolution=204,196 "), std::string::npos);
    EXPECT_NE(text.find("exOut.Directory=\"C:\\my faxes\" exOut.FileName=a=b exRun.Target=\"\""),
              std::string::npos);

    EXPECT_EQ(
        Narrow(settings.FromString(TEXT("dmCopies=3 exOut.Directory=\"D:\\x y\""), 0, TEXT(" "))),
        "dmCopies=1 exOut.Directory=\"C:\\my faxes\"");
    EXPECT_EQ(settings.Directory, UnicodeString(TEXT("D:\\x y")));
}

TEST_F(FieldMap, AnUnknownNameIsSkippedAloneInATextList) {
    TStringList items;
    for (const char* item : {"bogus", "dmCopies", "2"}) items.Add(item);
    EXPECT_EQ(Narrow(settings.FromStrings(&items, 0, TEXT(" "))), "dmCopies=1");
}

TEST(DevModeXml, AllPublicFieldsOfAForeignBlockAreWrittenAndSet) {
    DEVMODEW foreign = {};
    foreign.dmSize = sizeof(foreign);
    foreign.dmCopies = 3;
    TXmlNode node;
    DevModeToXmlNode(&foreign, &node);
    EXPECT_EQ(node.ChildCount(), 34);
    EXPECT_EQ(Narrow(node.ChildGetText(TEXT("dmCopies"), kCodePageUtf8)), "3");

    TXmlNode request;
    TXmlNode result;
    request.SetChild(TEXT("dmCopies"), TEXT("5"), kCodePageUtf8);
    request.SetChild(TEXT("exVersion"), TEXT("5"), kCodePageUtf8);
    request.SetChild(TEXT("dmFormName"), TEXT("A form name of more than thirty-two characters"),
                     kCodePageUtf8);
    XmlNodeToDevMode(&request, &foreign, &result);
    EXPECT_EQ(foreign.dmCopies, 5);
    EXPECT_EQ(foreign.dmFormName[31], 0);
    EXPECT_EQ(result.ChildCount(), 2);
}

TEST(DevModeXml, AShortBlockIsNeitherReadNorWrittenPastItsEnd) {
    alignas(DEVMODEW) unsigned char bytes[sizeof(DEVMODEW)];
    std::memset(bytes, 0xEE, sizeof(bytes));
    auto* block = reinterpret_cast<DEVMODEW*>(bytes);
    block->dmSize = 188;
    TXmlNode node;
    DevModeToXmlNode(block, &node);
    EXPECT_NE(node.FindChild(TEXT("dmDisplayFrequency"), kCodePageUtf8), nullptr);
    EXPECT_EQ(node.FindChild(TEXT("dmICMMethod"), kCodePageUtf8), nullptr);
    node.SetChild(TEXT("dmICMMethod"), TEXT("1"), kCodePageUtf8);
    XmlNodeToDevMode(&node, block, nullptr);
    EXPECT_EQ(bytes[188], 0xEE);
}

}  // namespace
