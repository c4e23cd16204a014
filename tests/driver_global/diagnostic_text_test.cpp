// Texts of records and codes for log lines.
#include "driver_global/diagnostic_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>
#include <vector>

#include "driver_devmode/qv_devmode.h"
#include "support/string_print.h"

namespace {

TEST(DiagnosticText, NullRecordsAreNamed) {
    const UnicodeString texts[] = {DEVMODE_Str(nullptr), DOCUMENTPROPERTYHEADER_Str(nullptr),
                                   TextTypeSTROBJ(nullptr), TextTypeSYSTEMTIME(nullptr),
                                   TextTypeJOB_INFO_2(nullptr)};
    for (const UnicodeString& text : texts) EXPECT_EQ(text, TEXT("NULL"));
}

TEST(DiagnosticText, PropertySheetModesAreJoined) {
    DOCUMENTPROPERTYHEADER header = {};
    WCHAR name[] = TEXT("Fax");
    header.pszPrinterName = name;
    header.cbSize = 64;
    header.hPrinter = reinterpret_cast<HANDLE>(static_cast<UINT_PTR>(0x1234567890ABull));
    const UnicodeString rest(
        TEXT(" pdmIn=0x00000000 pdmOut=0x00000000 cbOut=0 pszPrinterName=\"Fax\" "
             "hPrinter=0x567890ab cbSize=64 Reserved=0 "));
    const std::pair<DWORD, const WCHAR*> rows[] = {{0x0A, TEXT("DM_MODIFY|DM_COPY")},
                                                   {0x01, TEXT("Unknown(1)")},
                                                   {0, TEXT("NULL")},
                                                   {0x31, TEXT("DM_ADVANCED|DM_NOPERMISSION")}};
    for (const auto& [mode, text] : rows) {
        header.fMode = mode;
        EXPECT_EQ(DOCUMENTPROPERTYHEADER_Str(&header), UnicodeString(TEXT("fMode=")) + text + rest);
    }
}

// The product's own block: what is in force is marked, and its private fields follow.
TEST(DiagnosticText, ABlockShowsItsFields) {
    DEVMODEW empty = {};
    EXPECT_EQ(DEVMODE_Str(&empty), TEXT("Empty"));
    QV_DEVMODE block;
    block.dmFields = DM_ORIENTATION | DM_PAPERSIZE | DM_COPIES | DM_FORMNAME | DM_PANNINGHEIGHT;
    block.dmCopies = -2;
    block.dmDefaultSource = 12;
    for (WCHAR& unit : block.dmFormName) unit = 'f';
    UnicodeString text = DEVMODE_Str(&block);
    EXPECT_EQ(text.SubString(1, text.Pos(TEXT(" exDialog")) - 1),
              TEXT("DeviceName=\"Vantrel\" SpecVersion=1025 DriverVersion=256 Size=220 "
                   "DriverExtra=4180 *Orientation=Portrait *PaperSize=9 PaperLength=2970 "
                   "PaperWidth=2100 Scale=100 *Copies=-2 DefaultSource=Unknown(12) PrintQuality=0 "
                   "Color=DMCOLOR_COLOR Duplex=1 YResolution=0 TTOption=3 Collate=0 "
                   "*FormName=\"ffffffffffffffffffffffffffffffff\" Nup=DMNUP_ONEUP  ICMMethod=1 "
                   "ICMIntent=1 MediaType=1 DitherType=1 Reserved1=0 Reserved2=0 PanningWidth=0 "
                   "*PanningHeight=0 exID=\"QV DEVMODEex\" exVersion=263"));
    std::vector<BYTE> odd(sizeof(block) + 2);
    std::memcpy(odd.data() + 2, &block, sizeof(block));
    EXPECT_EQ(DEVMODE_Str(reinterpret_cast<DEVMODEW*>(odd.data() + 2)), text) << "not aligned";
    block.exVersion = 1;
    text = DEVMODE_Str(&block);
    EXPECT_EQ(text.SubString(text.Length() - 15, 16), TEXT("PanningHeight=0 "));
    block.dmSize = 188;
    block.dmDriverExtra = 0;
    EXPECT_GT(DEVMODE_Str(&block).Pos(TEXT(" ICMMethod=0 ")), 0) << "it lies behind the end";
}

TEST(DiagnosticText, TimesAndJobsShowPlainNumbers) {
    SYSTEMTIME time = {2012, 5, 1, 7, 9, 3, 1, 500};
    EXPECT_EQ(TextTypeSYSTEMTIME(&time), TEXT("2012-5-7 9:3:1"));
    JOB_INFO_2W job = {};
    QV_DEVMODE block;
    job.JobId = 9;
    job.Priority = 1;
    job.TotalPages = 8;
    job.Submitted = time;
    job.pDevMode = &block;
    EXPECT_EQ(TextTypeJOB_INFO_2(&job),
              TEXT("JobId=9 pPrinterName=\"(null)\" pMachineName=\"(null)\" "
                   "pUserName=\"(null)\" pDocument=\"(null)\" pNotifyName=\"(null)\" "
                   "pDatatype=\"(null)\" pPrintProcessor=\"(null)\" pParameters=\"(null)\" "
                   "pDriverName=\"(null)\" pDevMode=4400bytes pStatus=\"(null)\" Status=0 "
                   "Priority=1 Position=0 StartTime=0 UntilTime=0 TotalPages=8 Size=0 "
                   "Submitted=2012-5-7 9:3:1 Time=0 PagesPrinted=0 "));
    STROBJ string = {};
    string.cGlyphs = 3;
    string.rclBkGround = {-1, 2, 3, 4};
    EXPECT_EQ(TextTypeSTROBJ(&string), TEXT("cGlyphs=3 flAccel=0 ulCharInc=0 "
                                            "rclBkGround={-1,2,3,4} pgp=x0 pwszOrg=x0 "));
}

}  // namespace
