// Every field by name: XML and text forms, ranges, previous values.
#include "driver_devmode/field_map.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <tuple>

#include "driver_devmode/qvdm.h"
#include "xml/xml_test.h"
#include "xml/xml_writer.h"

namespace {

using Classes::TStringList;
using System::kCodePageUtf8;
using test::Utf8;

class FieldMap : public testing::Test {
  protected:
    TQVDM settings;
};

TEST_F(FieldMap, AFreshBlockAsText) {
    settings.Directory = TEXT("C:\\my faxes");
    settings.FileName = TEXT("a=b");
    settings.Encode();
    const std::string own = Utf8(settings.ToString(TEXT(" "), 34));
    EXPECT_TRUE(
        own.starts_with("exID=\"QV DEVMODEex\" exVersion=263 exDialog.Mode=INTERACTIVE "
                        "exFax.PaperSize=0 exFax.Resolution=204,196 "
                        "exOut.UseDocNameAsFileName=True "));
    EXPECT_TRUE(
        own.ends_with("exIPO.ColorMixer=30,59,11 DeviceName=Vantrel FormName=A4 "
                      "exOut.Directory=\"C:\\my faxes\" exOut.FileName=a=b "
                      "exRun.Target=\"\""));
    EXPECT_TRUE(Utf8(settings.ToString(TEXT(";"), -1)).starts_with("dmDeviceName=Vantrel;"));
}

TEST_F(FieldMap, TheIdentifierIsPlainTextThatEndsBeforeItsZero) {
    settings.FromString(TEXT("exID=\"A text that is far too long\""), 0, TEXT(" "));
    EXPECT_EQ(std::memcmp(settings.GetDM()->exID, "A text that i", 13), 0);
    EXPECT_EQ(int{settings.GetDM()->exVersion}, 263);
}

TEST_F(FieldMap, XmlSetsGroupsAndRecordsPreviousValues) {
    TXmlDoc request;
    test::Parse(request,
                "<r><dmCopies>2</dmCopies><noSuchField>2</noSuchField><exOut><UseSerial>false"
                "</UseSerial><Directory>D:\\in</Directory></exOut></r>");
    TXmlNode result;
    settings.Directory = TEXT("C:\\was");
    EXPECT_TRUE(settings.FromXmlNode(request.FRoot, &result));
    TXmlFormatter plain;
    EXPECT_EQ(Utf8(result.SaveToString(plain)),
              "<><dmCopies>1</dmCopies><exOut><UseSerial>True</UseSerial><Directory>C:\\was"
              "</Directory></exOut></>");
    EXPECT_EQ(TQVDM(settings.GetDM()).Directory, UnicodeString(TEXT("D:\\in")));

    TXmlNode written;
    written.AddChild(TEXT("exOut"));
    settings.ToXmlNode(&written);
    const std::pair<const WCHAR*, const char*> rows[] = {{TEXT("dmCopies"), "2"},
                                                         {TEXT("exOut\\UseSerial"), "False"},
                                                         {TEXT("exIPO\\CP3"), "255,255"}};
    for (const auto& [path, text] : rows) {
        ASSERT_NE(written.Find(path, kCodePageUtf8), nullptr);
        EXPECT_EQ(Utf8(written.Find(path, kCodePageUtf8)->FValue), text);
    }
    for (const WCHAR* unlisted :
         {TEXT("dmDeviceName"), TEXT("dmSize"), TEXT("exID"), TEXT("DeviceName")}) {
        EXPECT_EQ(written.Find(unlisted, kCodePageUtf8), nullptr);
    }
}

TEST_F(FieldMap, DeepNestingKeepsTheInnermostGroupAndNeedsNoStack) {
    TXmlNode request;
    TXmlNode* at = &request;
    for (int i = 0; i < 100000; ++i) at = at->AddChild(TEXT("exOut"));
    at->SetChild(TEXT("UseSerial"), TEXT("0"), kCodePageUtf8);
    settings.FromXmlNode(&request, nullptr);
    EXPECT_EQ(settings.GetDM()->exOut.UseSerial, 0);
}

TEST_F(FieldMap, TextSetsWhatItNamesAndSkipsAnUnknownNameAlone) {
    settings.Directory = TEXT("C:\\my faxes");
    EXPECT_EQ(
        Utf8(settings.FromString(TEXT("dmCopies=3 exOut.Directory=\"D:\\x y\""), 0, TEXT(" "))),
        "dmCopies=1 exOut.Directory=\"C:\\my faxes\"");
    EXPECT_EQ(settings.Directory, UnicodeString(TEXT("D:\\x y")));
    TStringList items;
    for (const char* item : {"first", "bogus", "dmCopies", "2", "dmScale"}) items.Add(item);
    EXPECT_EQ(Utf8(settings.FromStrings(&items, 1, TEXT(" "))), "dmCopies=3");
}

TEST(DevModeXml, AllPublicFieldsOfAForeignBlockAreWrittenAndSet) {
    DEVMODEW foreign = {};
    foreign.dmSize = sizeof(foreign);
    foreign.dmCopies = 3;
    TXmlNode node;
    DevModeToXmlNode(&foreign, &node);
    EXPECT_EQ(node.ChildCount(), 34);
    EXPECT_EQ(Utf8(node.ChildGetText(TEXT("dmCopies"), kCodePageUtf8)), "3");
    foreign.dmSize = 0;
    DevModeToXmlNode(&foreign, &node);
    EXPECT_EQ(node.ChildCount(), 34);
    EXPECT_EQ(Utf8(node.ChildGetText(TEXT("dmSize"), kCodePageUtf8)), "0");

    TXmlDoc request;
    test::Parse(request,
                "<r><dmCopies>5</dmCopies><exVersion>5</exVersion><dmFormName>"
                "A form name of more than thirty-two characters</dmFormName></r>");
    TXmlNode result;
    XmlNodeToDevMode(request.FRoot, &foreign, &result);
    EXPECT_EQ(foreign.dmCopies, 5);
    EXPECT_EQ(Utf8(foreign.dmFormName), "A form name of more than thirty");
    EXPECT_EQ(result.ChildCount(), 2);
}

TEST(DevModeXml, AShortBlockIsNeitherReadNorWrittenPastItsEnd) {
    // On the heap, where the address sanitizer sees a read behind the end.
    const auto bytes = std::make_unique<unsigned char[]>(188);
    auto* block = reinterpret_cast<DEVMODEW*>(bytes.get());
    block->dmSize = 188;
    TXmlNode node;
    DevModeToXmlNode(block, &node);
    EXPECT_NE(node.FindChild(TEXT("dmDisplayFrequency"), kCodePageUtf8), nullptr);
    EXPECT_EQ(node.FindChild(TEXT("dmICMMethod"), kCodePageUtf8), nullptr);
    node.SetChild(TEXT("dmICMMethod"), TEXT("1"), kCodePageUtf8);
    node.SetChild(TEXT("dmCopies"), TEXT("7"), kCodePageUtf8);
    XmlNodeToDevMode(&node, block, nullptr);
    EXPECT_EQ(block->dmCopies, 7);
}

}  // namespace
