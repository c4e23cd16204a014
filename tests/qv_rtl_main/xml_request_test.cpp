// The XML request call: its vocabulary, its messages, and that nothing escapes it.
#include "qv_rtl_main/xml_request.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <tuple>
#include <utility>

#include "driver_devmode/qv_devmode.h"
#include "driver_global/installation.h"
#include "mox_classes/containers/memory_stream.h"
#include "qv_rtl_main/xml_check.h"
#include "support/fresh_host_root.h"
#include "support/page_text.h"
#include "support/saved_response.h"
#include "support/test_printers.h"
#include "support/test_registry.h"
#include "xml/xml_test.h"

using namespace std::string_literals;
using test::Utf8;

namespace {

constexpr TCodePage kUtf8 = System::kCodePageUtf8;
const WCHAR* const kRequest = TEXT("C:\\qv_request_test.xml");
const WCHAR* const kResponse = TEXT("C:\\qv_response_test.xml");

class XmlRequest : public testing::Test {
  protected:
    ~XmlRequest() override {
        DeleteFileW(kRequest);
        DeleteFileW(kResponse);
    }

    static test::TestKey Product() { return test::TestKey(HKEY_LOCAL_MACHINE, kProductKey); }

    // The response's bytes; the document is kept for Text and the like.
    std::string Ask(const std::string& request) {
        return Answer(request, [](auto* in, auto* out) { EXPECT_EQ(DoXML(in, out), 1); });
    }

    // What the strict reading says about a request: a line with the column for each error, without
    // the source that it shows.
    std::string Strict(const std::string& request) {
        bool clean = false;
        const std::string bytes =
            Answer(request, [&](auto* in, auto* out) { clean = CheckXmlRequest(in, out); });
        EXPECT_EQ(clean, bytes.empty());
        if (clean) return "";
        std::string lines;
        const TXmlNode& message = *Node(TEXT("message"));
        for (int i = 0; i < message.ChildCount(); ++i) {
            std::string text = Utf8(message.GetChild(i)->FValue);
            text = text.substr(0, text.find('\n'));
            lines += text.substr(text.starts_with("line 1, column ") ? 15 : 0) + "\n";
        }
        return lines;
    }

    template <class Action>
    std::string Answer(const std::string& request, Action action) {
        Classes::TMemoryStream in;
        Classes::TMemoryStream out;
        in.WriteBuffer(request.data(), static_cast<int>(request.size()));
        in.SetPosition(0);
        action(&in, &out);
        const std::string bytes(static_cast<const char*>(out.GetMemory()),
                                static_cast<std::size_t>(out.GetSize()));
        if (!bytes.empty()) Take(bytes);
        return bytes;
    }

    void Take(const std::string& bytes) {
        test::SaveResponse(bytes);
        response_ = std::make_unique<TXmlDoc>();
        EXPECT_GT(test::Parse(*response_, bytes), 0) << bytes;
        EXPECT_EQ(Utf8(response_->FRoot->FName), "response");
    }

    static void WriteRequest(const std::string& text) {
        Classes::TFileStream file(kRequest, Classes::TFileStream::kCreate);
        file.WriteBuffer(text.data(), static_cast<int>(text.size()));
    }

    static std::string FileText(const WCHAR* name) {
        Classes::TFileStream file(name, Classes::TFileStream::kRead);
        std::string text(static_cast<std::size_t>(file.GetSize()), '\0');
        file.ReadBuffer(text.data(), static_cast<int>(text.size()));
        return text;
    }

    TXmlNode* Node(const WCHAR* path) { return response_->FRoot->Find(path, kUtf8); }
    std::string Text(const WCHAR* path) {
        const TXmlNode* node = Node(path);
        return node == nullptr ? "absent" : Utf8(node->FValue);
    }
    std::string Attribute(const WCHAR* path, const WCHAR* name) {
        const TXmlNode* node = Node(path);
        return node == nullptr ? "absent" : Utf8(node->AttrGetString(name, kUtf8));
    }
    static std::string NamesIn(const TXmlNode& node) {
        std::string names;
        for (int i = 0; i < node.ChildCount(); ++i) names += Utf8(node.GetChild(i)->FName) + " ";
        return names;
    }
    std::string Children() { return NamesIn(*response_->FRoot); }

    test::FreshHostRoot root_;
    std::unique_ptr<TXmlDoc> response_;
};

TEST_F(XmlRequest, TheRootSelectsTheFormOfTheResponse) {
    Product().Set(TEXT("Language"), TEXT("de")).Set(TEXT("Other"), TEXT("not reported"));
    EXPECT_EQ(Ask("<query linebreak=\"&#10;\" indentation=\" \"><global>any</global></query>"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<response to=\"query\">\n <global>\n"
              "  <Language>de</Language>\n </global>\n</response>\n");
    EXPECT_EQ(Ask("<x encoding=\"UTF-16\"/>").substr(0, 4), "<\0?\0"s);
    Ask("<x encoding=\"utf-8\"/>");
    EXPECT_EQ(Text(TEXT("message\\error")), "Unsupported codepage for result: utf-8");
    Ask("<x encoding=\"UTF-8\"/>");
    EXPECT_EQ(Children(), "");
}

TEST_F(XmlRequest, GlobalSettingsAreReportedInTheirOwnOrder) {
    Ask("<query><global/></query>");
    EXPECT_EQ(Text(TEXT("message\\error")), "Cannot open the registry for global settings");
    EXPECT_EQ(Attribute(TEXT("message\\error"), TEXT("W32Code")), "2");
    Product().Set(TEXT("Language"), TEXT("de")).Set(TEXT("InstallPath"), TEXT("C:\\x"));
    Product().Set(TEXT("DefaultLocale"), TEXT("")).Set(TEXT("DefaultRasterizer"), DWORD{7});
    Ask("<query><driver><name>no such driver</name></driver><global/></query>");
    EXPECT_EQ(Children(), "global message ");
    EXPECT_EQ(NamesIn(*Node(TEXT("global"))), "DefaultLocale InstallPath Language ");
    EXPECT_EQ(Text(TEXT("global\\InstallPath")), "C:\\x");
    EXPECT_EQ(Text(TEXT("message\\warning")), "No printer driver was found");
}

TEST_F(XmlRequest, AnUpdateOfGlobalSettingsGivesThePreviousValues) {
    Product().Set(TEXT("Language"), TEXT("en"));
    Ask("<update><global><Language>de</Language></global>"
        "<global><New> a &lt; b </New></global><other/></update>");
    EXPECT_EQ(Children(), "global ");
    EXPECT_EQ(Text(TEXT("global\\Language")), "en");
    EXPECT_EQ(Node(TEXT("global"))->ChildCount(), 1);
    Ask("<update><global><New>x</New></global></update>");
    EXPECT_EQ(Text(TEXT("global\\New")), "a < b");
    Ask("<query><global/></query>");
    EXPECT_EQ(Text(TEXT("global\\Language")), "de");
}

TEST_F(XmlRequest, AnIncompletePrinterUpdateIsNamed) {
    Ask("<update><printer><devmode/></printer><printer><name>p</name></printer></update>");
    EXPECT_EQ(Children(), "message ");
    EXPECT_EQ(Text(TEXT("message\\error")), "No name node was found");
    EXPECT_EQ(Text(TEXT("message\\warning")), "Nothing to set");
    EXPECT_EQ(Attribute(TEXT("message\\warning"), TEXT("printer")), "p");
    Ask("<update><printer><name>no such printer</name><devmode/></printer></update>");
    EXPECT_EQ(Text(TEXT("message\\error")), "Cannot get global DEVMODE");
    EXPECT_EQ(Attribute(TEXT("message\\error"), TEXT("W32Code")), "1801");
    EXPECT_EQ(Attribute(TEXT("message\\error"), TEXT("printer")), "no such printer");
    EXPECT_EQ(Attribute(TEXT("message\\error"), TEXT("W32Msg")).substr(0, 6), "[1801]");
}

TEST_F(XmlRequest, ABrokenRequestChangesNothingAndIsLocated) {
    Product().Set(TEXT("Language"), TEXT("en"));
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"<update>\n\t<global><Language>de</Language></global><x></update>",
         "The request is not well-formed XML: line 2, column 53: the end tag is of 'update', the "
         "open element is 'x' (opened at line 2, column 42)\n"
         "\t<global><Language>de</Language></global><x></update>\n"
         "\t                                                   ^",
         "61 2 53"},
        {"<update>\r\n <global><Language>de</Language></global>\r\n\r\n",
         "The request ends before its root element is closed: line 2, column 42: 'update' has no "
         "end tag (opened at line 1, column 1)\n"
         " <global><Language>de</Language></global>\n"
         "                                         ^",
         "55 2 42"},
        {"\xEF\xBB\xBF<update><global><Language>de</Language></global>\xA9</update>",
         "The request is not well-formed XML: line 1, column 49: Invalid char found\n"
         "<update><global><Language>de</Language></global>\xEF\xBF\xBD</update>\n"
         "                                                ^",
         "51 1 49"},
        {"",
         "The request ends before its root element is closed: line 1, column 1: there is no "
         "element",
         "0 1 1"}};
    for (const auto& [request, text, place] : rows) {
        Ask(request);
        EXPECT_EQ(Children(), "message ");
        const WCHAR* const error = TEXT("message\\error");
        EXPECT_EQ(Text(error), text);
        EXPECT_EQ(Attribute(error, TEXT("position")) + " " + Attribute(error, TEXT("line")) + " " +
                      Attribute(error, TEXT("column")),
                  place);
    }
    Ask("<query><global/></query>");
    EXPECT_EQ(Text(TEXT("global\\Language")), "en");
}

TEST_F(XmlRequest, FilesAreAnsweredWhateverTheyAre) {
    WriteRequest("<x/>");
    EXPECT_EQ(DoXMLW(kRequest, kResponse), 1);
    EXPECT_EQ(FileText(kResponse),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><response to=\"x\"/>");
    WriteRequest("<x>");
    EXPECT_EQ(DoXMLA("C:\\qv_request_test.xml", "C:\\qv_response_test.xml"), 1);
    Take(FileText(kResponse));
    EXPECT_EQ(Attribute(TEXT("message\\error"), TEXT("file")), Utf8(kRequest));
    EXPECT_EQ(Attribute(TEXT("message\\error"), TEXT("position")), "3");
    DeleteFileW(kRequest);
    EXPECT_EQ(DoXMLW(kRequest, kResponse), 1);
    Take(FileText(kResponse));
    EXPECT_EQ(Text(TEXT("message\\error")).substr(0, 33), "Cannot open the request file: [2]");
    EXPECT_EQ(Attribute(TEXT("message\\error"), TEXT("file")), Utf8(kRequest));
}

TEST_F(XmlRequest, AResponseThatCannotBeWrittenAppliesNothing) {
    Product().Set(TEXT("Language"), TEXT("en"));
    const std::string update = "<update><global><Language>de</Language></global></update>";
    WriteRequest(update);
    EXPECT_EQ(DoXMLW(kRequest, TEXT("C:\\no such folder\\r.xml")), 1);
    EXPECT_EQ(DoXMLW(kRequest, kRequest), 1);
    EXPECT_EQ(DoXMLW(nullptr, nullptr), 1);
    EXPECT_EQ(DoXMLA(nullptr, nullptr), 1);
    EXPECT_EQ(FileText(kRequest), update);
    Ask("<query><global/></query>");
    EXPECT_EQ(Text(TEXT("global\\Language")), "en");
}

TEST_F(XmlRequest, TheStrictReadingNamesWhatWouldNotBeUsed) {
    const std::pair<std::string, std::string> rows[] = {
        {"<query linebreak=\"\" encoding=\"UTF-16\"><printer><driver>d</driver></printer><driver>"
         "<name>d</name></driver><monitor/><global/></query>",
         ""},
        {"<ask/>", "1: unknown request 'ask': known are 'query' and 'update'\n"},
        {"<query>",
         "The request ends before its root element is closed: line 1, column 8: 'query' has no end "
         "tag (opened at line 1, column 1)\n"},
        {"<query encoding=\"utf-8\" case=\"1\">t<global a=\"1\"> u <b/></global> v "
         "<driver><name><c/>"
         "</name></driver></query>w",
         "1: the encoding 'utf-8' is neither 'UTF-8' nor 'UTF-16'\n"
         "1: unknown attribute 'case'\n"
         "34: the text in 'query' is not used\n"
         "35: the text behind 'global' is not used\n"
         "35: the attribute 'a' of 'global' is not used\n"
         "49: the text in 'global' is not used\n"
         "52: unknown element 'b' in 'global'\n"
         "82: elements in 'name' are not used\n"},
        {"<update><global><Any>1</Any></global><printer><name>p</name><name>q</name><devmode "
         "d=\"1\">"
         "<dmCopies>x</dmCopies><exIPO><CP0>1,2,3</CP0><No>1</No></exIPO><No/></devmode></printer>"
         "</update>",
         "61: a second 'name' is not used\n"
         "75: the attribute 'd' of 'devmode' is not used\n"
         "100: 'x' is no value of 'dmCopies'\n"
         "124: '1,2,3' has more values than 'exIPO.CP0'\n"
         "135: unknown field 'exIPO.No'\n"
         "153: unknown field 'No'\n"},
        {"<update><printer><devmode><dmFormName>A</dmFormName><FormName>B5</FormName><DeviceName>" +
             std::string(32, 'd') +
             "</DeviceName><exID>x</exID><dmScale>70000</dmScale><dmColor/><exOut><Directory>d</"
             "Directory><FileName>f</FileName></exOut><exRun><Enabled>maybe</"
             "Enabled><Target>" +
             std::string(2048, 't') +
             "</Target></exRun></devmode></printer>"
             "</update>",
         "27: the value of 'dmFormName' does not last: set 'DeviceName' or 'FormName'\n"
         "88: the text is longer than 'DeviceName'\n"
         "139: 'x' is no value of 'exID'\n"
         "156: '70000' is no value of 'dmScale'\n"
         "171: '' is no value of 'dmColor'\n"
         "258: 'maybe' is no value of 'exRun.Enabled'\n"
         "281: exRun.Target has no room: its text has 2048 characters, 2042 are left\n"},
        {"<update>a<!-- c -->lost<" + std::string(70, 'n') + "/></update>",
         "9: the text in 'update' is not used\n20: this text is not used\n24: unknown element '" +
             std::string(60, 'n') + "...' in 'update'\n"},
    };
    for (const auto& [request, lines] : rows) EXPECT_EQ(Strict(request), lines) << request;
    std::string many;
    for (int i = 0; i < 102; ++i) many += "<x/>";
    many = Strict("<query>" + many + "</query>");
    EXPECT_EQ(std::count(many.begin(), many.end(), '\n'), 101);
    EXPECT_TRUE(many.ends_with("\n2 more are not shown\n"));
}

class XmlPrinterRequest : public XmlRequest {
  protected:
    static test::Bytes ProductBlock() {
        const auto block = std::make_unique<QV_DEVMODE>();
        const auto* bytes = reinterpret_cast<const BYTE*>(block.get());
        return test::Bytes(bytes, bytes + sizeof(QV_DEVMODE));
    }

    std::string AskPrinters(const test::Text& driver) {
        return Ask("<query><printer><driver>" + Utf8(driver.c_str()) +
                   "</driver></printer></query>");
    }

    test::TestPrinters printers_;
};

TEST_F(XmlPrinterRequest, PrintersAreReportedWithTheirSettings) {
    printers_.InstallPrinter(TEXT("QV One"));
    printers_.SetUserDevMode(TEXT("QV One"), ProductBlock());
    printers_.InstallPrinter(TEXT("QV Foreign"), test::kOtherDriver);
    printers_.SetUserDevMode(TEXT("QV Foreign"),
                             test::PublicBlock(TEXT("QV Foreign"), test::kOtherBlockBytes));
    AskPrinters(test::kProductDriver);
    EXPECT_EQ(Children(), "printer ");
    EXPECT_EQ(Text(TEXT("printer\\name")), "QV One");
    EXPECT_EQ(Text(TEXT("printer\\port")), "LPT1:");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\dmOrientation")), "PORTRAIT");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\exOut\\UseSerial")), "True");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\dmDeviceName")), "absent");
    AskPrinters(test::kOtherDriver);
    EXPECT_EQ(Children(), "printer ");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\dmDeviceName")), "QV Foreign");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\exOut")), "absent");
    AskPrinters(TEXT("no such driver"));
    EXPECT_EQ(Text(TEXT("message\\warning")), "No printer was found");
}

TEST_F(XmlPrinterRequest, AnUpdateGivesThePreviousValuesAndIsStored) {
    printers_.InstallPrinter(TEXT("QV One"));
    printers_.SetUserDevMode(TEXT("QV One"), ProductBlock());
    const std::string update =
        "<update><printer><name>QV One</name><devmode><dmCopies>2</dmCopies>"
        "<exOut><UseSerial>False</UseSerial></exOut><unknown>1</unknown></devmode></printer>"
        "</update>";
    Ask(update);
    EXPECT_EQ(Children(), "printer ");
    EXPECT_EQ(Text(TEXT("printer\\name")), "QV One");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\dmCopies")), "1");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\exOut\\UseSerial")), "True");
    EXPECT_EQ(Node(TEXT("printer\\devmode"))->ChildCount(), 2);
    Ask(update);
    EXPECT_EQ(Text(TEXT("printer\\devmode\\dmCopies")), "2");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\exOut\\UseSerial")), "False");
}

TEST_F(XmlPrinterRequest, ATextWithoutRoomIsEmptyAndNamed) {
    printers_.InstallPrinter(TEXT("QV One"));
    printers_.SetUserDevMode(TEXT("QV One"), ProductBlock());
    const auto update = [this](const std::string& settings) {
        Ask("<update><printer><name>QV One</name><devmode>" + settings +
            "</devmode></printer></update>");
    };
    update("<exRun><Target>C:\\safe\\prog.exe --go</Target></exRun>");
    std::string folder = "C:\\";
    while (folder.size() < 1987) folder += "calc.exe --evil ";
    update("<exOut><Directory>" + folder.substr(0, 1987) + "</Directory><FileName>" +
           std::string(100, 'f') + "</FileName></exOut>");
    EXPECT_EQ(
        Text(TEXT("message\\error")),
        "exOut.FileName has no room: its text has 100 characters, 59 are left. It is empty now");
    EXPECT_EQ(Attribute(TEXT("message\\error"), TEXT("printer")), "QV One");
    EXPECT_EQ(Node(TEXT("message"))->ChildCount(), 2);
    AskPrinters(test::kProductDriver);
    EXPECT_EQ(Text(TEXT("printer\\devmode\\exOut\\FileName")), "");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\exRun\\Target")), "");
}

TEST_F(XmlPrinterRequest, ADamagedTextThatGetsItsDefaultIsNamed) {
    auto block = ProductBlock();
    reinterpret_cast<QV_DEVMODE*>(block.data())->exOut.DirectoryOffset = 3000;
    printers_.InstallPrinter(TEXT("QV One"));
    printers_.SetUserDevMode(TEXT("QV One"), block);
    Ask("<update><printer><name>QV One</name><devmode><dmCopies>2</dmCopies><exOut><FileName>x"
        "</FileName></exOut></devmode></printer></update>");
    ASSERT_EQ(Node(TEXT("message"))->ChildCount(), 2);
    for (const int i : {0, 1}) {
        const UnicodeString text = Node(TEXT("message"))->GetChild(i)->FValue;
        EXPECT_GT(text.Pos(i == 0 ? TEXT("exOut.Directory was damaged") : TEXT("exRun.Target was")),
                  0);
    }
}

TEST_F(XmlPrinterRequest, AForeignBlockIsReplacedByTheProductsDefaults) {
    printers_.InstallPrinter(TEXT("QV One"));
    printers_.SetUserDevMode(TEXT("QV One"),
                             test::PublicBlock(TEXT("QV One"), test::kOtherBlockBytes));
    Ask("<update><printer><name>QV One</name><devmode><dmCopies>3</dmCopies></devmode></printer>"
        "</update>");
    EXPECT_EQ(Children(), "printer ");
    AskPrinters(test::kProductDriver);
    EXPECT_EQ(Text(TEXT("printer\\devmode\\dmCopies")), "3");
    EXPECT_EQ(Text(TEXT("printer\\devmode\\exDialog\\Mode")), "INTERACTIVE");
}

TEST_F(XmlPrinterRequest, ABlockThatLiesAboutItsSizeIsNotStored) {
    printers_.InstallPrinter(TEXT("QV One"));
    printers_.SetUserDevMode(TEXT("QV One"), ProductBlock());
    for (const char* change : {"<dmDriverExtra>60000</dmDriverExtra>", "<exID>other</exID>"}) {
        Ask("<update><printer><name>QV One</name><devmode><dmCopies>2</dmCopies>" +
            std::string(change) + "</devmode></printer></update>");
        EXPECT_EQ(Children(), "printer message ");
        EXPECT_EQ(Text(TEXT("message\\error")), "Cannot set global DEVMODE");
        EXPECT_EQ(Attribute(TEXT("message\\error"), TEXT("W32Code")), "13");
    }
    AskPrinters(test::kProductDriver);
    EXPECT_EQ(Text(TEXT("printer\\devmode\\dmCopies")), "1");
}

TEST_F(XmlPrinterRequest, APrinterWithoutSettingsIsAWarning) {
    if (!test::TestPrinters::PrintersCanLackDevMode()) {
        GTEST_SKIP() << "the spooler makes up a block for every printer";
    }
    printers_.InstallPrinter(TEXT("QV Bare"));
    Ask("<query><printer/></query>");
    EXPECT_EQ(Node(TEXT("printer\\devmode")), nullptr);
    EXPECT_EQ(Text(TEXT("message\\warning")), "QV Bare has no default DEVMODE data.");
    EXPECT_EQ(Attribute(TEXT("message\\warning"), TEXT("printer")), "QV Bare");
}

TEST_F(XmlPrinterRequest, DriversAndMonitorsAreReported) {
    Ask("<query><driver><name>" + Utf8(test::kProductDriver.c_str()) + "</name></driver></query>");
    ASSERT_EQ(Children(), "driver ");
    EXPECT_EQ(NamesIn(*Node(TEXT("driver"))),
              "version name environment graphic ui monitor datatype ");
    EXPECT_EQ(Text(TEXT("driver\\version")), "3");
    EXPECT_EQ(Text(TEXT("driver\\environment")), "Windows x64");
    EXPECT_NE(Node(TEXT("driver\\ui"))->FindAttribute(TEXT("version"), kUtf8), nullptr);
    printers_.InstallMonitor(TEXT("QV Test Monitor"), TEXT("qv_test_monitor.dll"));
    Ask("<query><monitor><name>QV Test Monitor</name></monitor></query>");
    EXPECT_EQ(Children(), "monitor ");
    EXPECT_EQ(Text(TEXT("monitor\\name")), "QV Test Monitor");
    EXPECT_EQ(Text(TEXT("monitor\\dllName")), "qv_test_monitor.dll");
}

// The requests and responses that the documentation shows, in its order.
TEST_F(XmlPrinterRequest, ThePageShowsWhatHappens) {
    Product().Set(TEXT("Language"), TEXT("de"));
    Product().Set(TEXT("InstallPath"), TEXT("C:\\Program Files\\Vantrel"));
    printers_.InstallPrinter(TEXT("Vantrel Fax"));
    printers_.SetUserDevMode(TEXT("Vantrel Fax"), ProductBlock());
    std::string page = test::PageText("xml.md");
    int shown = 0;
    for (std::size_t at; (at = page.find("```xml request\n")) != std::string::npos; ++shown) {
        page.erase(0, at);
        const std::string request = test::Between(page, "request\n", "```");
        EXPECT_EQ(Ask(request), test::Between(page, "```xml response\n", "```"));
        page.erase(0, 1);
    }
    EXPECT_EQ(shown, 2);
}

}  // namespace
