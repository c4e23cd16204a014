// Spooler states that only the Linux host can stage: answers that lie, jobs.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <functional>

#include "mox_classes/memory/handles.h"
#include "printer_query/spooler.h"
#include "support/captured_log.h"
#include "support/fresh_host_root.h"
#include "support/string_print.h"
#include "support/test_printers.h"
#include "support/test_registry.h"

namespace {

// Changes an answer of GetPrinterW before the library gets it.
std::function<void(LPDEVMODEW& devmode)> tamper;

}  // namespace

// Stands in front of the host's call of that name.
extern "C" __attribute__((visibility("default"))) BOOL GetPrinterW(HANDLE printer, DWORD level,
                                                                   LPBYTE buffer, DWORD size,
                                                                   LPDWORD needed) {
    static const auto real =
        reinterpret_cast<decltype(&GetPrinterW)>(dlsym(RTLD_NEXT, "GetPrinterW"));
    const BOOL done = real(printer, level, buffer, size, needed);
    if (!done || !tamper) return done;
    tamper(level == 2 ? reinterpret_cast<PRINTER_INFO_2W*>(buffer)->pDevMode
                      : reinterpret_cast<PRINTER_INFO_9W*>(buffer)->pDevMode);
    return done;
}

namespace {

class StagedSpooler : public testing::Test {
  protected:
    StagedSpooler() {
        printers_.InstallPrinter(TEXT("QV Fax"));
        const test::Bytes block = test::PublicBlock(TEXT("QV Fax"), 4400);
        printers_.SetUserDevMode(TEXT("QV Fax"), block);
        printers_.SetDefaultDevMode(TEXT("QV Fax"), block);
    }
    ~StagedSpooler() override { tamper = nullptr; }
    static void ExpectRefusal() {
        EXPECT_EQ(GetGlobalDevMode(TEXT("QV Fax")).GetErrorCode(), 13u);
        EXPECT_EQ(GetPrinterDevMode(TEXT("QV Fax")).GetErrorCode(), 13u);
    }

    test::FreshHostRoot root_;
    test::TestPrinters printers_;
    test::CapturedLog log_;
};

}  // namespace

TEST_F(StagedSpooler, BlocksThatClaimMoreThanThereIsAreNeverRead) {
    const struct {
        WORD size, extra;
    } cases[] = {{220, 65535}, {65535, 65535}, {65535, 0}, {75, 0}, {0, 220}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.size);
        tamper = [&c](LPDEVMODEW& mode) {
            mode->dmSize = c.size;
            mode->dmDriverExtra = c.extra;
        };
        ExpectRefusal();
    }
    EXPECT_TRUE(log_.Has('X', TEXT("[GetPrinterDevMode(\"QV Fax\")] The DEVMODE does not fit the "
                                   "returned data: [13]")));
}

TEST_F(StagedSpooler, BlocksOutsideTheAnswerAreNeverRead) {
    tamper = [](LPDEVMODEW& mode) { mode += 400; };
    ExpectRefusal();
    tamper = [](LPDEVMODEW& mode) { mode -= 400; };
    ExpectRefusal();
}

TEST_F(StagedSpooler, AShortBlockIsCopiedAtItsOwnSize) {
    tamper = [](LPDEVMODEW& mode) {
        mode->dmSize = 188;
        mode->dmDriverExtra = 0;
    };
    EXPECT_EQ(GetGlobalDevMode(TEXT("QV Fax")).Size(), 188);
}

TEST_F(StagedSpooler, JobsByNumberAndInOrder) {
    const test::Text jobs =
        TEXT("System\\CurrentControlSet\\Control\\Print\\Printers\\QV Fax\\Jobs\\");
    test::TestKey(HKEY_LOCAL_MACHINE, jobs + TEXT("7"))
        .Set(TEXT("Document"), TEXT("First"))
        .Set(TEXT("Position"), 1);
    test::TestKey(HKEY_LOCAL_MACHINE, jobs + TEXT("3"))
        .Set(TEXT("Document"), TEXT("Second"))
        .Set(TEXT("Position"), 2);
    HANDLE printer = nullptr;
    test::Text name = TEXT("QV Fax");
    ASSERT_TRUE(OpenPrinterW(name.data(), &printer, nullptr));
    const System::TPrinterHandle owner(printer);

    const auto list = GetPrintersJobs(printer, 10);
    ASSERT_EQ(list.Count(), 2);
    EXPECT_EQ(list[0].JobId, 7u);
    EXPECT_EQ(GetPrintersJobs(printer, 1).Count(), 1);
    const auto job = GetJobInfo2(printer, 3);
    ASSERT_EQ(job.Count(), 1);
    EXPECT_EQ(UnicodeString(job[0].pDocument), TEXT("Second"));
    EXPECT_FALSE(GetJobInfo2(printer, 4).IsSuccess());
}
