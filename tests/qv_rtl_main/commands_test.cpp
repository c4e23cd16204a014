// The text command call: its lines, buffers and statuses, and the commands on printers.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>

#include "driver_devmode/qvdm.h"
#include "mox_classes/containers/streams.h"
#include "printer_query/spooler.h"
#include "qv_rtl_main/command_entry.h"
#include "support/captured_log.h"
#include "support/fresh_host_root.h"
#include "support/string_print.h"
#include "support/test_printers.h"

namespace {

const UnicodeString kFax = TEXT("QV Fax");

class Commands : public testing::Test {
  protected:
    Commands() { printers_.InstallPrinter(kFax.t_str()); }
    // Runs a line whose items are separated by '|'; `text` receives the answer.
    int Run(test::Text line) {
        for (WCHAR& unit : line) {
            if (unit == '|') unit = 9;
        }
        WCHAR buffer[4096];
        const int status = DoCommandW(line.c_str(), buffer, 4095);
        text = buffer;
        return status;
    }
    int Set(const test::Text& pairs) { return Run(TEXT("setdevmode|printername|QV Fax|") + pairs); }
    // What is stored for the printer now.
    static QV_DEVMODE Stored() {
        QV_DEVMODE dm;
        const auto block = GetGlobalDevMode(kFax);
        EXPECT_EQ(block.Size(), 4400);
        if (block.Size() == 4400) std::memcpy(static_cast<void*>(&dm), &block[0], 4400);
        return dm;
    }
    static UnicodeString StoredTarget() {
        QV_DEVMODE dm = Stored();
        TQVDM wrapper(&dm);
        return wrapper.Target;
    }

    UnicodeString text;
    test::FreshHostRoot root_;
    test::TestPrinters printers_;
    test::CapturedLog log_;
};

}  // namespace

TEST_F(Commands, OtherWordsAreInvalid) {
    for (const WCHAR* line : {TEXT(""), TEXT("  "), TEXT("getdevmodes"), TEXT("get devmode"),
                              TEXT("||"), TEXT("\"getdevmode")}) {
        EXPECT_EQ(Run(line), 15);
        EXPECT_EQ(text, TEXT("Invalid Command"));
    }
    EXPECT_EQ(DoCommandW(nullptr, nullptr, 0), 15);
    EXPECT_EQ(DoCommandA(nullptr, nullptr, 0), 15);
}

TEST_F(Commands, TheBufferGetsWhatFitsAndATerminator) {
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
}

TEST_F(Commands, TheProductsPrintersAreListed) {
    printers_.InstallPrinter(TEXT("QV Other"), test::kOtherDriver);
    EXPECT_EQ(Run(TEXT(" GetOrloPrinters ")), 6);
    EXPECT_EQ(text, kFax);
    printers_.InstallPrinter(TEXT("QV Second"));
    EXPECT_EQ(Run(TEXT("getorloprinters|whatever")), 16);
    EXPECT_EQ(text.Length(), 16);
    EXPECT_GT(text.Pos(TEXT("\t")), 0);
    EXPECT_GT(text.Pos(TEXT("QV Second")), 0);
    EXPECT_EQ(text.Pos(TEXT("QV Other")), 0);
}

TEST_F(Commands, FaultsOfTheLineAndThePrinterHaveTheirStatus) {
    EXPECT_EQ(Run(TEXT("getdevmode|printername")), -10);
    EXPECT_EQ(text, TEXT("Invalid parameter count"));
    EXPECT_EQ(Run(TEXT("setdevmode|printername|QV Fax|mode")), -10);
    EXPECT_EQ(Run(TEXT("getdevmode|printername|")), -20);
    EXPECT_EQ(text, TEXT("Invalid printer name parameter"));
    EXPECT_EQ(Run(TEXT("setdevmode|printer|QV Fax")), -20);
    for (const WCHAR* word : {TEXT("getdevmode"), TEXT("setdevmode")}) {
        EXPECT_EQ(Run(test::Text(word) + TEXT("| PrinterName | QV Fax ")), -30) << "blanks count";
        const UnicodeString start = TEXT("Cannot get devmode of the printer, ' QV Fax .' : [1801]");
        EXPECT_EQ(text.SubString(1, start.Length()), start);
    }
}

TEST_F(Commands, MainSettingsGoOutAndIn) {
    EXPECT_EQ(Set(TEXT("Mode|1| UseSerial |0|usedocname|1|callapp|0|defaultsavefile|a b.tif|")
                      TEXT("defaultsavedir|c:\\faxes")),
              0);
    EXPECT_TRUE(text.Length() == 0);
    const int length = Run(TEXT("GETDEVMODE|printername|QV Fax"));
    EXPECT_EQ(length, text.Length());
    EXPECT_EQ(text, TEXT("Mode\t1\tColorMix\t30,59,11\tDitherMethod\t2\tUseSerial\t0\tUseDocname\t1"
                         "\tCallApp\t0\tDefaultSaveFile\ta b.tif\tDefaultSaveDir\tc:\\faxes"));
}

TEST_F(Commands, ADamagedTextThatGetsItsDefaultIsReported) {
    test::Bytes block(sizeof(QV_DEVMODE));
    const QV_DEVMODE fresh;
    std::memcpy(block.data(), static_cast<const void*>(&fresh), block.size());
    reinterpret_cast<QV_DEVMODE*>(block.data())->exRun.TargetOffset = -1;
    printers_.SetUserDevMode(kFax.t_str(), block);
    Set(TEXT("mode|1"));
    EXPECT_EQ(text, TEXT("The stored text of exRun.Target was damaged. Its default \"\" takes its "
                         "place.\r\n"));
    EXPECT_EQ(Stored().exDialog.Mode, 1);
}

TEST_F(Commands, AnUnknownKeywordIsReportedAndTheRestStored) {
    EXPECT_EQ(Set(TEXT("mode|1|colour|red")), 44);
    EXPECT_EQ(text, TEXT("Unsupported keyword 'colour' was detected.\r\n"));
    EXPECT_EQ(Stored().exDialog.Mode, 1);
}

TEST_F(Commands, AValueThatIsNotANumberChangesNothing) {
    ASSERT_EQ(Set(TEXT("mode|1")), 0);
    EXPECT_EQ(Set(TEXT("mode|0|callapp|yes")), -60);
    EXPECT_EQ(text, TEXT("'yes' is not a valid integer value"));
    EXPECT_EQ(Set(TEXT("mode|")), -60);
    EXPECT_EQ(Stored().exDialog.Mode, 1);
}

TEST_F(Commands, TextsThatDoNotFitAreRefused) {
    EXPECT_EQ(Set(TEXT("defaultsavefile|") + test::Text(3000, 'x')), -40);
    EXPECT_EQ(text, TEXT("Cannot encode the QV_DEVMODE extra data\r\n"));
}

TEST_F(Commands, ColourMixAndDitherTakeWhatTheyCan) {
    Set(TEXT("colormix|1,2,3|colormix|1,2"));
    EXPECT_EQ(Stored().exIPO.ColorMixer.Red, 30) << "two weights are none, and the last ones count";
    Set(TEXT("colormix|x,60,12,4|dithermethod|three"));
    const QV_DEVMODE dm = Stored();
    EXPECT_EQ(dm.exIPO.ColorMixer.Red, 1);
    EXPECT_EQ(dm.exIPO.ColorMixer.Green, 60);
    EXPECT_EQ(dm.exIPO.ColorMixer.Blue, 12);
    EXPECT_EQ(dm.exIPO.DitherMethod, 2);
    Set(TEXT("dithermethod|3"));
    EXPECT_EQ(Stored().exIPO.DitherMethod, 3);
}

TEST_F(Commands, AProgramIsACommandLineAndAMessageAnEvent) {
    Set(TEXT("appname|c:\\a b.exe|appparam|-x {spoolfile}"));
    EXPECT_EQ(StoredTarget(), TEXT("\"c:\\a b.exe\" -x {spoolfile}"));
    Set(TEXT("mode|0"));
    EXPECT_EQ(StoredTarget(), TEXT("\"c:\\a b.exe\" -x {spoolfile}")) << "unchanged";
    Set(TEXT("appname|a.exe"));
    EXPECT_EQ(StoredTarget(), TEXT("a.exe"));
    Set(TEXT("appname|a.exe|appparam|<1>|msgname|done|msgformat|<1>|msgwinclass|TWin"));
    EXPECT_EQ(StoredTarget(),
              TEXT("<event file=\"a.exe\" param=\"&lt;1&gt;\" msg=\"done\" win=\"TWin\"/>"));
    Set(TEXT("appparam|1|msgformat|2"));
    EXPECT_EQ(StoredTarget(), TEXT("<event param_run=\"1\" param_msg=\"2\"/>"));
}

TEST_F(Commands, AProgramThatExistsIsReported) {
    WCHAR folder[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, folder);
    const test::Text program = test::Text(folder) + TEXT("qv command test.exe");
    Classes::TFileStream(program.c_str(), Classes::TFileStream::kCreate);
    Set(TEXT("appname|") + program + TEXT("|appparam|-p"));
    Run(TEXT("getdevmode|printername|QV Fax"));
    DeleteFileW(program.c_str());
    const UnicodeString end = (TEXT("\tAppName\t") + program +
                               TEXT("\tAppParam\t-p\tMsgName\t\tMsgFormat\t\tMsgWinClass\t"))
                                  .c_str();
    EXPECT_EQ(text.SubString(text.Length() - end.Length() + 1, end.Length()), end);
}

TEST_F(Commands, TheNarrowCallSpeaksTheAnsiCodePage) {
    printers_.InstallPrinter(TEXT("QV Caf\x00E9"));
    char buffer[256];
    EXPECT_EQ(DoCommandA("getdevmode\tprintername\tQV Caf\xE9?", buffer, 255), -30);
    EXPECT_NE(std::strstr(buffer, "QV Caf\xE9?.'"), nullptr) << buffer;
    const int length = DoCommandA("getdevmode\tprintername\tQV Caf\xE9", nullptr, 0);
    EXPECT_EQ(DoCommandA("getdevmode\tprintername\tQV Caf\xE9", buffer, 6), length);
    EXPECT_STREQ(buffer, "Mode\t0");
}
