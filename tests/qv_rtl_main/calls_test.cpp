// The XML request call and the text command call: their answers, files and buffers, and that
// nothing escapes them.
#include "qv_rtl_main/xml_request.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <sstream>
#include <vector>

#include "driver_devmode/default_settings.h"
#include "driver_devmode/qv_devmode.h"
#include "driver_global/installation.h"
#include "mox_classes/containers/memory_stream.h"
#include "qv_rtl_main/command_entry.h"
#include "qv_rtl_main/xml_check.h"
#include "support/case_file.h"
#include "support/fresh_host_root.h"
#include "support/page_text.h"
#include "support/saved_response.h"
#include "support/string_print.h"
#include "support/test_printers.h"
#include "support/test_registry.h"
#include "xml/xml_test.h"

using namespace std::string_literals;
using test::Matches;
using test::Unescaped;
using test::Utf8;

namespace {

const WCHAR* const kRequest = TEXT("C:\\qv_request_test.xml");
const WCHAR* const kResponse = TEXT("C:\\qv_response_test.xml");

// Of text in Latin-1.
test::Text Wide(const std::string& latin) {
    test::Text text;
    for (const char unit : latin) text += static_cast<WCHAR>(static_cast<unsigned char>(unit));
    return text;
}

// The product's settings of a printer as it is installed.
test::Bytes ProductBlock() {
    const auto block = std::make_unique<QV_DEVMODE>();
    const auto* bytes = reinterpret_cast<const BYTE*>(block.get());
    return test::Bytes(bytes, bytes + sizeof(QV_DEVMODE));
}

// An empty machine, and the calls of a case on it.
class Machine {
  public:
    ~Machine() {
        DeleteFileW(kRequest);
        DeleteFileW(kResponse);
    }
    static void SetValue(const std::string& name, const std::string& value) {
        test::TestKey(HKEY_LOCAL_MACHINE, kProductKey).Set(Wide(name).c_str(), Wide(value));
    }
    // With settings of a kind; false when this host has no such printers.
    bool Install(const std::string& name, const std::string& kind) {
        if (!printers_) printers_.emplace();
        const test::Text wide = Wide(name);
        printers_->InstallPrinter(wide,
                                  kind == "other" ? test::kOtherDriver : test::kProductDriver);
        test::Bytes block = ProductBlock();
        if (kind == "other" || kind == "foreign")
            block = test::PublicBlock(wide, test::kOtherBlockBytes);
        if (kind == "damaged")
            reinterpret_cast<QV_DEVMODE*>(block.data())->exOut.DirectoryOffset = 3000;
        if (kind != "bare") {
            printers_->SetDefaultDevMode(wide, block);
            printers_->SetUserDevMode(wide, block);
        }
        return kind != "bare" || test::TestPrinters::PrintersCanLackDevMode();
    }
    void InstallMonitor(const std::string& name) {
        if (!printers_) printers_.emplace();
        printers_->InstallMonitor(Wide(name), Wide("qv_test_monitor.dll"));
    }
    // The response. For the strict reading only its errors, or "".
    static std::string Ask(const std::string& request, bool strict = false) {
        Classes::TMemoryStream in, out;
        in.WriteBuffer(request.data(), static_cast<int>(request.size()));
        in.SetPosition(0);
        const bool done = strict ? CheckXmlRequest(&in, &out) : DoXML(&in, &out) == 1;
        EXPECT_EQ(done, !strict || out.GetSize() == 0);
        if (out.GetSize() == 0) return "";
        std::string bytes(static_cast<const char*>(out.GetMemory()),
                          static_cast<std::size_t>(out.GetSize()));
        test::SaveResponse(bytes);
        EXPECT_GT(test::Result(bytes), 0) << bytes;
        return bytes;
    }
    // The status and the text of a command whose items are separated by '|'.
    static std::string Command(const std::string& line) {
        test::Text items = Wide(line);
        std::replace(items.begin(), items.end(), WCHAR{'|'}, WCHAR{9});
        WCHAR buffer[4096];
        const int status = DoCommandW(items.c_str(), buffer, 4095);
        std::string text = Utf8(UnicodeString(static_cast<const WCHAR*>(buffer)));
        std::replace(text.begin(), text.end(), '\t', '|');
        return std::to_string(status) + ' ' + text;
    }
    // The answer of the call that sets a printer's defaults; texts stand behind four switches, and
    // "-" is a null pointer.
    static std::string SetDefaults(const std::string& line) {
        std::istringstream items(line);
        std::vector<test::Text> texts;
        for (std::string item; std::getline(items, item, '|');) texts.push_back(Wide(item));
        texts.resize(9);
        const auto text = [&](std::size_t i) {
            return texts[i] == TEXT("-") ? nullptr : texts[i].c_str();
        };
        const auto flag = [&](std::size_t i) { return static_cast<BYTE>(texts[1][i] - '0'); };
        return std::to_string(SetQVDefaultSetting(text(0), flag(0), flag(1), flag(2), flag(3),
                                                  text(2), text(3), text(4), text(5), text(6),
                                                  text(7), text(8)));
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

  private:
    test::FreshHostRoot root_;
    std::optional<test::TestPrinters> printers_;
};

TEST(XmlRequest, CallsAreAnsweredAsTheFileOfCasesSays) {
    std::istringstream lines(test::PageText("../tests/qv_rtl_main/calls.txt"));
    std::optional<Machine> machine;
    bool possible = true;
    int calls = 0;
    for (std::string line, answer; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string verb, name, rest;
        words >> verb >> name;
        std::getline(words >> std::ws, rest);
        if (verb == "#") {
            machine.reset();
            machine.emplace();
            possible = true;
        } else if (verb == "value") {
            machine->SetValue(name, rest);
        } else if (verb == "printer") {
            possible = machine->Install(name, rest) && possible;
        } else if (verb == "monitor") {
            machine->InstallMonitor(name);
        } else if (verb == "ask" || verb == "strict" || verb == "do" || verb == "default") {
            ASSERT_TRUE(std::getline(lines, answer)) << line;
            if (!possible) continue;
            const std::string call = Unescaped(line.substr(verb.size() + 1));
            const std::string got = verb == "do"        ? machine->Command(call)
                                    : verb == "default" ? machine->SetDefaults(call)
                                                        : machine->Ask(call, verb == "strict");
            EXPECT_TRUE(Matches(Unescaped(answer), got)) << line << "\ngives\n" << got;
            ++calls;
        }
    }
    EXPECT_GT(calls, 60);
}

TEST(XmlRequest, TheEncodingIsTheRequestsWish) {
    const Machine machine;
    EXPECT_EQ(machine.Ask("<x encoding=\"UTF-16\"/>").substr(0, 4), "<\0?\0"s);
}

TEST(XmlRequest, FilesAreAnsweredWhateverTheyAre) {
    const Machine machine;
    machine.WriteRequest("<x/>");
    EXPECT_EQ(DoXMLW(kRequest, kResponse), 1);
    EXPECT_EQ(machine.FileText(kResponse),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><response to=\"x\"/>");
    machine.WriteRequest("<x>");
    EXPECT_EQ(DoXMLA("C:\\qv_request_test.xml", "C:\\qv_response_test.xml"), 1);
    EXPECT_TRUE(Matches("<*><error file=\"C:\\qv_request_test.xml\" position=\"3\"<*>",
                        machine.FileText(kResponse)));
    DeleteFileW(kRequest);
    EXPECT_EQ(DoXMLW(kRequest, kResponse), 1);
    EXPECT_TRUE(Matches("<*>file=\"C:\\qv_request_test.xml\">Cannot open the request file: [2]<*>",
                        machine.FileText(kResponse)));
}

TEST(XmlRequest, AResponseThatCannotBeWrittenAppliesNothing) {
    const Machine machine;
    machine.SetValue("Language", "en");
    const std::string update = "<update><global><Language>de</Language></global></update>";
    machine.WriteRequest(update);
    EXPECT_EQ(DoXMLW(kRequest, TEXT("C:\\no such folder\\r.xml")), 1);
    EXPECT_EQ(DoXMLW(kRequest, kRequest), 1);
    EXPECT_EQ(DoXMLW(nullptr, nullptr), 1);
    EXPECT_EQ(DoXMLA(nullptr, nullptr), 1);
    EXPECT_EQ(machine.FileText(kRequest), update);
    EXPECT_TRUE(Matches("<*><Language>en</Language><*>", machine.Ask("<query><global/></query>")));
}

TEST(XmlRequest, TheStrictReadingShowsAHundredErrors) {
    const auto ask = [](int errors) {
        std::string elements;
        while (errors-- > 0) elements += "<x/>";
        return Machine::Ask("<query>" + elements + "</query>", true);
    };
    const std::string many = ask(102);
    EXPECT_EQ(std::count(many.begin(), many.end(), '^'), 100);
    EXPECT_TRUE(Matches("<*>>2 more are not shown<*>", many));
    EXPECT_FALSE(Matches("<*>more are not shown<*>", ask(100)));
}

TEST(Commands, TheBufferGetsWhatFitsAndATerminator) {
    const Machine machine;
    const std::pair<int, const char*> rows[] = {
        {5, "Inval"}, {0, ""}, {-3, ""}, {15, "Invalid Command"}, {20, "Invalid Command"}};
    for (const auto& [length, stored] : rows) {
        WCHAR wide[24];
        char narrow[24];
        std::fill(std::begin(wide), std::end(wide), WCHAR{'#'});
        std::fill(std::begin(narrow), std::end(narrow), '#');
        EXPECT_EQ(DoCommand(TEXT("x"), wide, length), 15);
        EXPECT_EQ(DoCommandA("x", narrow, length), 15);
        EXPECT_EQ(UnicodeString(wide), UnicodeString(stored));
        EXPECT_STREQ(narrow, stored);
        EXPECT_EQ(wide[std::strlen(stored) + 1], '#');
        EXPECT_EQ(narrow[std::strlen(stored) + 1], '#');
    }
    EXPECT_EQ(DoCommandW(nullptr, nullptr, 0), 15);
    EXPECT_EQ(DoCommandA(nullptr, nullptr, 0), 15);
}

TEST(Commands, AProgramThatExistsIsReported) {
    Machine machine;
    machine.Install("QV-One", "product");
    WCHAR folder[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, folder);
    const test::Text program = test::Text(folder) + TEXT("qv command test.exe");
    Classes::TFileStream(program.c_str(), Classes::TFileStream::kCreate);
    const std::string narrow = Utf8(program.c_str());
    machine.Command("setdevmode|printername|QV-One|appname|" + narrow + "|appparam|-p");
    const std::string text = machine.Command("getdevmode|printername|QV-One");
    DeleteFileW(program.c_str());
    EXPECT_TRUE(
        text.ends_with("|AppName|" + narrow + "|AppParam|-p|MsgName||MsgFormat||MsgWinClass|"));
}

TEST(Commands, TheNarrowCallSpeaksTheAnsiCodePage) {
    Machine machine;
    machine.Install("QV-Caf\xE9", "product");
    char buffer[256];
    EXPECT_EQ(DoCommandA("getdevmode\tprintername\tQV-Caf\xE9?", buffer, 255), -30);
    EXPECT_NE(std::strstr(buffer, "QV-Caf\xE9?.'"), nullptr) << buffer;
    const int length = DoCommandA("getdevmode\tprintername\tQV-Caf\xE9", nullptr, 0);
    EXPECT_EQ(DoCommandA("getdevmode\tprintername\tQV-Caf\xE9", buffer, 6), length);
    EXPECT_STREQ(buffer, "Mode\t0");
}

// The requests and responses that the documentation shows, in its order.
TEST(XmlRequest, ThePageShowsWhatHappens) {
    Machine machine;
    machine.SetValue("Language", "de");
    machine.SetValue("InstallPath", "C:\\Program Files\\Vantrel");
    machine.Install("Vantrel Fax", "product");
    std::string page = test::PageText("xml.md");
    int shown = 0;
    for (std::size_t at; (at = page.find("```xml request\n")) != std::string::npos; ++shown) {
        page.erase(0, at);
        const std::string request = test::Between(page, "request\n", "```");
        EXPECT_EQ(machine.Ask(request), test::Between(page, "```xml response\n", "```"));
        page.erase(0, 1);
    }
    EXPECT_EQ(shown, 2);
}

}  // namespace
