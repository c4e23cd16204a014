// The spooler's queries and updates on printers that the test installs.
#include <gtest/gtest.h>

#include <cstring>

#include "mox_classes/memory/handles.h"
#include "printer_query/spooler.h"
#include "support/captured_log.h"
#include "support/fresh_host_root.h"
#include "support/string_print.h"
#include "support/test_printers.h"
#include "support/wine_gap.h"

namespace {

using test::Bytes;

const test::Text kFax = TEXT("QV Fax");
const test::Text kOther = TEXT("QV Other");
const WCHAR* const kMissing = TEXT("QV No Such Printer");

class SpoolerQueries : public testing::Test {
  protected:
    SpoolerQueries() {
        printers_.InstallPrinter(kFax);
        printers_.InstallPrinter(kOther, test::kOtherDriver);
    }
    static System::TPrinterHandle Open(test::Text name) {
        HANDLE printer = nullptr;
        OpenPrinterW(name.data(), &printer, nullptr);
        return System::TPrinterHandle(printer);
    }
    static Bytes Block(DWORD size, short copies) {
        Bytes block = test::PublicBlock(kFax, size);
        auto* mode = reinterpret_cast<DEVMODEW*>(block.data());
        mode->dmFields = DM_COPIES;
        mode->dmCopies = copies;
        return block;
    }
    template <class T>
    static bool Names(const TW32StructData<T>& records, LPWSTR T::*member, const test::Text& name) {
        for (int i = 0; i < records.Count(); ++i) {
            if (name == records[i].*member) return true;
        }
        return false;
    }

    void ExpectErrors(std::initializer_list<const WCHAR*> lines) const {
        for (const WCHAR* line : lines) EXPECT_TRUE(log_.Has('X', line)) << test::Shown(line);
    }

    test::FreshHostRoot root_;
    test::TestPrinters printers_;
    test::CapturedLog log_;
};

}  // namespace

TEST_F(SpoolerQueries, ListPrintersAndDrivers) {
    const auto printers = GetInstalledPrintersInfo2();
    EXPECT_TRUE(Names(printers, &PRINTER_INFO_2W::pPrinterName, kFax));
    EXPECT_TRUE(Names(printers, &PRINTER_INFO_2W::pPrinterName, kOther));
    const auto drivers = GetInstalledPrinterDrivers();
    EXPECT_TRUE(Names(drivers, &DRIVER_INFO_3W::pName, test::kProductDriver));
    EXPECT_GT(GetPrinterDriverDir().Length(), 0);
    EXPECT_TRUE(log_.Has('i', TEXT("[GetPrinterDriverDirectory] needed=")));
}

TEST_F(SpoolerQueries, FindOnePrinter) {
    const auto info = GetPrinterInfo2(UnicodeString(kOther.c_str()));
    ASSERT_EQ(info.Count(), 1);
    EXPECT_EQ(info[0].pDriverName, test::kOtherDriver);
    EXPECT_GE(info.Size(), 136);
    EXPECT_TRUE(log_.Entries().empty());
}

TEST_F(SpoolerQueries, AMissingPrinterIsAnErrorEverywhere) {
    const UnicodeString missing = kMissing;
    EXPECT_EQ(GetPrinterInfo2(missing).GetErrorCode(), 1801u);
    EXPECT_EQ(GetPrinterDevMode(missing).GetErrorCode(), 1801u);
    EXPECT_EQ(GetGlobalDevMode(missing).GetErrorCode(), 1801u);
    EXPECT_EQ(SetGlobalDevMode(missing, nullptr, nullptr).GetErrorCode(), 1801u);
    ExpectErrors({TEXT("[GetPrinterInfo2(\"QV No Such Printer\")] OpenPrinter() failed: [1801]"),
                  TEXT("[GetPrinterDevMode(\"QV No Such Printer\")] GetPrinterInfo2() failed."),
                  TEXT("[GetGlobalDevMode('QV No Such Printer')] OpenPrinter failed: [1801]"),
                  TEXT("[SetGlobalDevMode('QV No Such Printer')] OpenPrinter failed: [1801]")});
}

TEST_F(SpoolerQueries, ABadHandleIsLoggedWithItsNumber) {
    const HANDLE bad = reinterpret_cast<HANDLE>(UINT_PTR{0xABCD0});
    EXPECT_FALSE(GetPrinterInfo2(bad).IsSuccess());
    EXPECT_FALSE(GetJobInfo2(bad, 7).IsSuccess());
    EXPECT_FALSE(GetPrintersJobs(bad, 1).IsSuccess());
    ExpectErrors({TEXT("[GetPrinterInfo2(xABCD0)] GetPrinter() raised unexpected error: ["),
                  TEXT("[GetJobInfo(xABCD0,7)] Unexpected GetJob(NULL) result: ["),
                  TEXT("[GetPrintersJobs] EnumJobsW(NULL) failed: [")});
}

TEST_F(SpoolerQueries, NoJobsIsAnEmptyAnswer) {
    const System::TPrinterHandle printer = Open(kFax);
    const auto jobs = GetPrintersJobs(printer.Get(), 10);
    test::ExpectExceptOnWine(jobs.IsSuccess() && jobs.Count() == 0, "EnumJobsW");
}

TEST_F(SpoolerQueries, AMonitorByNameIsSelfContained) {
    printers_.InstallMonitor(TEXT("QV Monitor"), TEXT("localspl.dll"));
    printers_.InstallMonitor(TEXT("QV Second Monitor"), TEXT("localspl.dll"));
    const auto all = GetMonitors(TEXT(""));
    ASSERT_GE(all.Count(), 2);
    EXPECT_EQ(GetMonitors(TEXT("qv monitor")).Count(), all.Count()) << "no such name";

    const auto one = GetMonitors(TEXT("QV Monitor"));
    ASSERT_EQ(one.Count(), 1);
    EXPECT_EQ(UnicodeString(one[0].pName), TEXT("QV Monitor"));
    EXPECT_EQ(UnicodeString(one[0].pDLLName), TEXT("localspl.dll"));
    const int units = UnicodeString(one[0].pEnvironment).Length() + 10 + 12 + 3;
    EXPECT_EQ(one.Size(), 24 + 2 * units);
    const auto* end = reinterpret_cast<const char*>(&one[0]) + one.Size();
    EXPECT_EQ(reinterpret_cast<const char*>(one[0].pDLLName + 13), end);
}

TEST_F(SpoolerQueries, PrinterDataIsText) {
    const System::TPrinterHandle printer = Open(kFax);
    for (const WCHAR* text : {TEXT("Upper"), TEXT("x"), TEXT("")}) {
        printers_.SetPrinterText(kFax, TEXT("Tray"), text);
        EXPECT_EQ(ReadPrinterData(printer.Get(), TEXT("Tray")), text);
    }
    EXPECT_TRUE(log_.Entries().empty());
    EXPECT_TRUE(ReadPrinterData(printer.Get(), TEXT("None")).IsEmpty());
    EXPECT_TRUE(log_.Has('X', TEXT("GetPrinterDataW(Key=None): [2]")));
}

TEST_F(SpoolerQueries, AUserBlockIsCopiedWhole) {
    const Bytes block = Block(test::kProductBlockBytes, 7);
    printers_.SetUserDevMode(kFax, block);
    const auto mode = GetGlobalDevMode(kFax.c_str());
    ASSERT_EQ(mode.Count(), 1);
    ASSERT_EQ(mode.Size(), 4400);
    test::ExpectExceptOnWine(std::memcmp(&mode[0], block.data(), block.size()) == 0,
                             "unused characters of the names");
    EXPECT_EQ(std::memcmp(&mode[0] + 1, block.data() + sizeof(DEVMODEW), 4400 - sizeof(DEVMODEW)),
              0);
    EXPECT_TRUE(log_.Has(' ', TEXT("[GetGlobalDevMode(x")));
}

TEST_F(SpoolerQueries, WithoutABlockTheAnswerIsEmpty) {
    if (!test::TestPrinters::PrintersCanLackDevMode()) {
        GTEST_SKIP() << "this host's printers always have a block";
    }
    EXPECT_TRUE(GetGlobalDevMode(kFax.c_str()).IsEmpty());
    EXPECT_TRUE(log_.Has('*', TEXT("[GetGlobalDevMode(x")));
    EXPECT_TRUE(GetPrinterDevMode(kFax.c_str()).IsEmpty());
    EXPECT_TRUE(log_.Has(
        'X', TEXT("[GetPrinterDevMode(\"QV Fax\")] DEVMODE of the PRINTER_INFO_2 is NULL")));
}

TEST_F(SpoolerQueries, WhatTheDriverMergedIsStored) {
    for (const DWORD size : {test::kProductBlockBytes, test::kOtherBlockBytes}) {
        const UnicodeString name = (size == test::kProductBlockBytes ? kFax : kOther).c_str();
        Bytes block = Block(size, 3);
        auto* mode = reinterpret_cast<DEVMODEW*>(block.data());
        const auto stored = SetGlobalDevMode(name, mode, nullptr);
        ASSERT_TRUE(stored.IsSuccess()) << stored.GetErrorCode();
        EXPECT_EQ(stored.Size(), static_cast<int>(size));
        const auto read = GetGlobalDevMode(name);
        ASSERT_EQ(read.Size(), static_cast<int>(size));
        EXPECT_EQ(read[0].dmCopies, 3);
    }
    EXPECT_TRUE(log_.Has('i', TEXT("SetPrinter() called successfully")));
    EXPECT_TRUE(log_.Has('i', TEXT("[SetGlobalDevMode('QV Other')] Broadcasted the DEVMODE change "
                                   "notification")));
}
