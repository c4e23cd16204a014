// Texts of records and codes for log lines.
#include "driver_global/diagnostic_text.h"

#include <gtest/gtest.h>

#include "driver_devmode/qv_devmode.h"
#include "support/string_print.h"

namespace {

TEST(DiagnosticText, CodesShowTheirNameOrTheirNumber) {
    EXPECT_EQ(DrvDeviceCapabilities_DeviceCap(18), UnicodeString(TEXT("DC_COPIES")));
    EXPECT_EQ(DrvDeviceCapabilities_DeviceCap(36), UnicodeString(TEXT("Unknown(36)")));
    EXPECT_EQ(DrvDocumentEvent_iEsc(14), UnicodeString(TEXT("DOCUMENTEVENT_QUERYFILTER")));
    EXPECT_EQ(DrvDocumentEvent_iEsc(-1), UnicodeString(TEXT("Unknown(-1)")));
    EXPECT_EQ(DrvConvertDevMode_fMode(4), UnicodeString(TEXT("CDM_DRIVER_DEFAULT")));
    EXPECT_EQ(DrvConvertDevMode_fMode(0xFFFFFFFF), UnicodeString(TEXT("Unknown(4294967295)")));
}

TEST(DiagnosticText, NullRecordsAreNamed) {
    const UnicodeString null_text(TEXT("NULL"));
    EXPECT_EQ(DEVMODE_Str(nullptr), null_text);
    EXPECT_EQ(DOCUMENTPROPERTYHEADER_Str(nullptr), null_text);
    EXPECT_EQ(TextTypeSTROBJ(nullptr), null_text);
    EXPECT_EQ(TextTypeSYSTEMTIME(nullptr), null_text);
    EXPECT_EQ(TextTypeJOB_INFO_2(nullptr), null_text);
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
    struct {
        DWORD mode;
        const WCHAR* text;
    } const cases[] = {{0x0A, TEXT("DM_MODIFY|DM_COPY")},
                       {0x01, TEXT("Unknown(1)")},
                       {0, TEXT("NULL")},
                       {0x31, TEXT("DM_ADVANCED|DM_NOPERMISSION")}};
    for (const auto& c : cases) {
        header.fMode = c.mode;
        EXPECT_EQ(DOCUMENTPROPERTYHEADER_Str(&header),
                  UnicodeString(TEXT("fMode=")) + c.text + rest);
    }
}

TEST(DiagnosticText, FieldsInForceAreMarked) {
    DEVMODEW devmode = {};
    EXPECT_EQ(DEVMODE_Str(&devmode), UnicodeString(TEXT("Empty")));
    devmode.dmCopies = 2;
    devmode.dmFields = DM_COPIES;
    EXPECT_EQ(
        DEVMODE_Str(&devmode),
        UnicodeString(TEXT(
            "DeviceName=\"\" SpecVersion=0 DriverVersion=0 Size=0 DriverExtra=0 "
            "Orientation=Unknown(0) PaperSize=0 "
            "PaperLength=0 PaperWidth=0 Scale=0 *Copies=2 DefaultSource=Unknown(0) PrintQuality=0 "
            "Color=Unknown(0) "
            "Duplex=0 YResolution=0 TTOption=0 Collate=0 FormName=\"\" Nup=Unknown(0) ICMMethod=0 "
            "ICMIntent=0 "
            "MediaType=0 DitherType=0 Reserved1=0 Reserved2=0 PanningWidth=0 PanningHeight=0 ")));
}

TEST(DiagnosticText, TheProductsOwnBlockShowsItsPrivateFields) {
    QV_DEVMODE block;
    const UnicodeString text = DEVMODE_Str(&block);
    EXPECT_GT(text.Pos(TEXT("*Orientation=Portrait *PaperSize=9")), 0);
    EXPECT_GT(text.Pos(TEXT("Nup=DMNUP_ONEUP  ICMMethod=1")), 0);
    EXPECT_GT(text.Pos(TEXT("PanningHeight=0 exID=\"QV DEVMODEex\" exVersion=263")), 0);
}

TEST(DiagnosticText, TimesAndJobsShowPlainNumbers) {
    SYSTEMTIME time = {2012, 5, 1, 7, 9, 3, 1, 500};
    EXPECT_EQ(TextTypeSYSTEMTIME(&time), UnicodeString(TEXT("2012-5-7 9:3:1")));
    JOB_INFO_2W job = {};
    job.JobId = 9;
    job.Submitted = time;
    const UnicodeString text = TextTypeJOB_INFO_2(&job);
    EXPECT_EQ(text.Pos(TEXT("JobId=9 pPrinterName=\"(null)\"")), 1);
    EXPECT_GT(text.Pos(TEXT("pDevMode=0bytes pStatus=\"(null)\" Status=0")), 0);
    EXPECT_GT(text.Pos(TEXT("Submitted=2012-5-7 9:3:1 Time=0 PagesPrinted=0 ")), 0);
    STROBJ string = {};
    string.cGlyphs = 3;
    string.rclBkGround = {-1, 2, 3, 4};
    EXPECT_EQ(TextTypeSTROBJ(&string),
              UnicodeString(TEXT("cGlyphs=3 flAccel=0 ulCharInc=0 rclBkGround={-1,2,3,4} pgp=x0 "
                                 "pwszOrg=x0 ")));
}

}  // namespace
