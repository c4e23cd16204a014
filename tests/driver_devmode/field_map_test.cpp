// Every field by name: XML and text forms, ranges, previous values.
#include "driver_devmode/field_map.h"

#include <gtest/gtest.h>

#include <cstring>
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
    // Sets one field by its dotted name; the result is the previous value, or "-" when none was
    // recorded.
    std::string Set(const char* name, const char* value) {
        TStringList items;
        items.Add(name);
        items.Add(value);
        const std::string before = Utf8(settings.FromStrings(&items, 0, TEXT(" ")));
        return before.empty() ? "-" : before.substr(before.find('=') + 1);
    }
    // A value without blanks, as the text form shows it.
    std::string Now(const std::string& name) {
        const std::string all = " " + Utf8(settings.ToString(TEXT(" "), 0)) + " ";
        const std::size_t at = all.find(" " + name + "=") + name.size() + 2;
        return all.substr(at, all.find(' ', at) - at);
    }

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

TEST_F(FieldMap, ValuesAreTakenByNameByPrefixedNameAndByNumberInTheirRange) {
    const std::tuple<const char*, const char*, const char*, const char*> rows[] = {
        {"dmOrientation", "landscape", "PORTRAIT", "LANDSCAPE"},
        {"dmOrientation", "DMORIENT_PORTRAIT", "LANDSCAPE", "PORTRAIT"},
        {"dmOrientation", "2", "PORTRAIT", "LANDSCAPE"},
        {"dmOrientation", "sideways", "-", "LANDSCAPE"},
        {"dmPrintQuality", "-4", "0", "HIGH"},
        {"exRun.Enabled", "off", "True", "False"},
        {"exFax.Resolution", "100", "204,196", "100,196"},
        {"exFax.Resolution", "204,70000", "-", "204,196"},
        {"exFax.Resolution", "\"1 \" , 2", "204,196", "1,2"},
        {"exIPO.ColorMixer", "300,0,0", "-", "30,0,0"},
        {"dmCopies", " 12 pages", "1", "12"},
        {"dmCopies", "none", "12", "0"},
        {"dmCopies", "32768", "-", "0"},
        {"dmCopies", "+32767", "0", "32767"},
        {"dmFields", "4294967295", "527", "-1"},
        {"dmFields", "-1", "4294967295", "-1"},
        {"dmFields", "4294967296", "-", "-1"},
        {"dmFields", "99999999999999999999999", "-", "-1"},
        {"exIPO.Contrast", "-128", "5", "-128"},
        {"exIPO.Contrast", "128", "-", "-128"},
        {"exIPO.CriticalZone", "255,256", "-", "255,137"},
        {"dmLogPixels", "65535", "0", "65535"},
        {"dmLogPixels", "65536", "-", "65535"},
        {"dmSize", "77", "-", "220"},
        {"dmSize", "221", "220", "221"},
        {"dmDriverExtra", "4179", "-", "4180"},
        {"exVersion", "260", "-", "263"},
        {"exVersion", "261", "263", "261"}};
    for (const auto& [name, value, previous, now] : rows) {
        EXPECT_EQ(Set(name, value), previous) << name << "=" << value;
        EXPECT_EQ(Now(name), now) << name << "=" << value;
    }
}

TEST_F(FieldMap, TheIdentifierIsPlainTextThatEndsBeforeItsZero) {
    EXPECT_EQ(Set("exID", "A text that is far too long"), "\"QV DEVMODEex\"");
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

TEST_F(FieldMap, FormNamesLastOnlyUnderTheWrappersName) {
    Set("dmFormName", "Lost");
    EXPECT_EQ(Now("dmFormName"), "A4");
    Set("FormName", "Kept");
    EXPECT_EQ(Now("dmFormName"), "Kept");
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
