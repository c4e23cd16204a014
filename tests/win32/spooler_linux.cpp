// The spooler over the registry's keys: records, buffers, refusals.
#include <gtest/gtest.h>
#include <qv_host.h>
#include <windows.h>
#include <winspool.h>

#include <cstring>

#include "support/fresh_host_root.h"
#include "support/last_error.h"
#include "support/source_folder.h"
#include "support/test_registry.h"

using test::ErrorUnless;

namespace {

using Bytes = std::vector<BYTE>;

std::u16string Text(LPCWSTR text) {
    return text;
}

class Spooler : public testing::Test {
  protected:
    Spooler() {
        const std::string file = test::SourceFolder() + "/tests/data/spooler.reg";
        EXPECT_TRUE(QvHostImport(std::u16string(file.begin(), file.end()).c_str(), nullptr, 0));
        fax_ = Open(u"FAX");
    }
    ~Spooler() override { ClosePrinter(fax_); }
    static HANDLE Open(std::u16string name, DWORD access = PRINTER_ACCESS_USE) {
        HANDLE printer = nullptr;
        PRINTER_DEFAULTSW defaults{nullptr, nullptr, access};
        return OpenPrinterW(name.data(), &printer, &defaults) ? printer : nullptr;
    }
    // The two-call protocol; checks that the needed size is exact.
    template <class Call>
    static Bytes Ask(const Call& call) {
        DWORD needed = 0, rest = 0;
        SetLastError(0);
        if (call(nullptr, 0, &needed)) return {};
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
        Bytes buffer(needed);
        EXPECT_FALSE(call(buffer.data(), needed - 1, &rest));
        EXPECT_TRUE(call(buffer.data(), needed, &rest));
        return buffer;
    }
    static Bytes Get(HANDLE printer, DWORD level) {
        return Ask([&](LPBYTE buffer, DWORD size, LPDWORD needed) {
            return GetPrinterW(printer, level, buffer, size, needed);
        });
    }
    static DWORD Set(HANDLE printer, DWORD level, void* record) {
        return ErrorUnless(SetPrinterW(printer, level, static_cast<LPBYTE>(record), 0));
    }
    static Bytes Block(WORD size, WORD extra) {
        Bytes bytes(std::size_t{size} + extra, 0x5A);
        std::memcpy(&bytes[offsetof(DEVMODEW, dmSize)], &size, 2);
        std::memcpy(&bytes[offsetof(DEVMODEW, dmDriverExtra)], &extra, 2);
        return bytes;
    }
    static DEVMODEW* AsDevMode(Bytes& bytes) { return reinterpret_cast<DEVMODEW*>(bytes.data()); }
    static void StoreUserBlock(const Bytes& data) {
        test::TestKey(HKEY_CURRENT_USER, u"Printers\\DevModePerUser").Set(u"Fax", data);
    }
    Bytes UserBlock() const {
        const Bytes buffer = Get(fax_, 9);
        const auto* block = reinterpret_cast<const PRINTER_INFO_9W*>(buffer.data())->pDevMode;
        if (block == nullptr) return {};
        const auto* bytes = reinterpret_cast<const BYTE*>(block);
        return {bytes, bytes + block->dmSize + block->dmDriverExtra};
    }

    const test::FreshHostRoot root_;
    HANDLE fax_ = nullptr;
};

TEST_F(Spooler, OpensPrintersByNameAndRefusesTheRest) {
    HANDLE printer = Open(u"FAX", PRINTER_ALL_ACCESS);
    EXPECT_NE(printer, nullptr);
    EXPECT_TRUE(ClosePrinter(printer));
    EXPECT_EQ(ErrorUnless(ClosePrinter(printer)), DWORD{ERROR_INVALID_HANDLE});
    for (const char16_t* name : {u"None", u"", u"Fax\\Jobs"}) {
        EXPECT_EQ(ErrorUnless(Open(name)), DWORD{ERROR_INVALID_PRINTER_NAME});
    }
    EXPECT_FALSE(OpenPrinterW(nullptr, &printer, nullptr));
    EXPECT_EQ(ErrorUnless(Open(u"Fax", 1)), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(Spooler, ListsPrintersWithTheirStringsInOneBuffer) {
    DWORD count = 0;
    const Bytes buffer = Ask([&](LPBYTE to, DWORD size, LPDWORD needed) {
        return EnumPrintersW(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 2, to, size,
                             needed, &count);
    });
    ASSERT_EQ(count, 2u);
    const auto* records = reinterpret_cast<const PRINTER_INFO_2W*>(buffer.data());
    EXPECT_EQ(Text(records[0].pPrinterName), u"Fax");
    EXPECT_EQ(Text(records[0].pDriverName), u"Fax Driver");
    EXPECT_EQ(Text(records[0].pComment), u"Sends");
    EXPECT_EQ(Text(records[0].pPortName), u"F") << "up to the zero";
    EXPECT_EQ(records[0].Attributes, 0x40u);
    EXPECT_EQ(records[0].cJobs, 3u);
    EXPECT_EQ(Text(records[1].pPrinterName), u"Plain One");
    EXPECT_EQ(Text(records[1].pPortName), u"");
    EXPECT_EQ(records[1].pDevMode, nullptr);
    const auto* last = reinterpret_cast<const BYTE*>(records[1].pParameters);
    EXPECT_EQ(last + sizeof(WCHAR), buffer.data() + buffer.size());
    DWORD needed = 0;
    EXPECT_TRUE(EnumPrintersW(PRINTER_ENUM_CONNECTIONS, nullptr, 2, nullptr, 0, &needed, &count));
    EXPECT_EQ(count, 0u);
}

TEST_F(Spooler, AnEmptyMachineListsNothing) {
    const test::FreshHostRoot empty;
    DWORD needed = 9, count = 9;
    EXPECT_TRUE(EnumPrintersW(PRINTER_ENUM_LOCAL, nullptr, 2, nullptr, 0, &needed, &count));
    EXPECT_TRUE(EnumMonitorsW(nullptr, 2, nullptr, 0, &needed, &count));
    EXPECT_TRUE(EnumPrinterDriversW(nullptr, nullptr, 3, nullptr, 0, &needed, &count));
    EXPECT_EQ(needed + count, 0u);
    const auto list = [&](DWORD flags, DWORD level, LPDWORD needs) {
        return ErrorUnless(EnumPrintersW(flags, nullptr, level, nullptr, 0, needs, &count));
    };
    EXPECT_EQ(list(PRINTER_ENUM_LOCAL, 4, &needed), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(list(1, 2, &needed), DWORD{ERROR_INVALID_FLAGS});
    EXPECT_EQ(list(PRINTER_ENUM_LOCAL, 2, nullptr), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(Spooler, DriversAndMonitorsNameTheirFiles) {
    DWORD count = 0;
    const Bytes drivers = Ask([&](LPBYTE to, DWORD size, LPDWORD needed) {
        return EnumPrinterDriversW(nullptr, nullptr, 3, to, size, needed, &count);
    });
    const auto& driver = *reinterpret_cast<const DRIVER_INFO_3W*>(drivers.data());
    const std::u16string folder = u"C:\\Windows\\System32\\spool\\drivers\\x64";
    EXPECT_EQ(Text(driver.pName), u"Fax Driver");
    EXPECT_EQ(Text(driver.pEnvironment), u"Windows x64");
    EXPECT_EQ(Text(driver.pDriverPath), folder + u"\\3\\fax.dll");
    EXPECT_EQ(Text(driver.pConfigFile), u"D:\\own\\faxui.dll");
    EXPECT_EQ(Text(driver.pHelpFile), u"");
    EXPECT_EQ(Text(driver.pDefaultDataType), u"RAW");
    const std::u16string dependent = folder + u"\\3\\a";
    EXPECT_EQ(Text(driver.pDependentFiles), dependent);
    EXPECT_EQ(Text(driver.pDependentFiles + dependent.size() + 1), folder + u"\\3\\b");
    EXPECT_EQ(driver.pDependentFiles[2 * dependent.size() + 2], 0) << "an empty text ends the list";
    EXPECT_EQ(driver.cVersion, 3u);
    const Bytes monitors = Ask([&](LPBYTE to, DWORD size, LPDWORD needed) {
        return EnumMonitorsW(nullptr, 2, to, size, needed, &count);
    });
    const auto& monitor = *reinterpret_cast<const MONITOR_INFO_2W*>(monitors.data());
    EXPECT_EQ(Text(monitor.pName), u"Fax Port");
    EXPECT_EQ(Text(monitor.pEnvironment), u"Windows x64");
    EXPECT_EQ(Text(monitor.pDLLName), u"faxmon.dll");
    const Bytes directory = Ask([&](LPBYTE to, DWORD size, LPDWORD needed) {
        return GetPrinterDriverDirectoryW(nullptr, nullptr, 1, to, size, needed);
    });
    EXPECT_EQ(Text(reinterpret_cast<LPCWSTR>(directory.data())), folder);
    EXPECT_EQ(directory.size(), (folder.size() + 1) * sizeof(WCHAR));
    std::u16string elsewhere = u"elsewhere";
    DWORD needed = 0;
    EXPECT_EQ(
        ErrorUnless(EnumPrinterDriversW(nullptr, elsewhere.data(), 3, nullptr, 0, &needed, &count)),
        DWORD{ERROR_INVALID_ENVIRONMENT});
    EXPECT_EQ(ErrorUnless(EnumMonitorsW(elsewhere.data(), 2, nullptr, 0, &needed, &count)),
              DWORD{ERROR_INVALID_NAME});
}

TEST_F(Spooler, JobsComeInTheOrderOfTheQueue) {
    DWORD count = 0, needed = 0;
    const auto list = [&](DWORD first, DWORD limit) {
        return Ask([&, first, limit](LPBYTE to, DWORD size, LPDWORD want) {
            return EnumJobsW(fax_, first, limit, 1, to, size, want, &count);
        });
    };
    const Bytes all = list(0, 10);
    const auto* jobs = reinterpret_cast<const JOB_INFO_1W*>(all.data());
    ASSERT_EQ(count, 3u);
    const DWORD ids[] = {7, 9, 12};
    for (DWORD i = 0; i < 3; ++i) {
        EXPECT_EQ(jobs[i].JobId, ids[i]);
        EXPECT_EQ(jobs[i].Position, i + 1);
    }
    EXPECT_EQ(Text(jobs[0].pStatus), u"Printing");
    EXPECT_EQ(Text(jobs[2].pDocument), u"Second");
    EXPECT_EQ(jobs[2].Priority, 1u);
    const Bytes middle = list(1, 1);
    EXPECT_EQ(reinterpret_cast<const JOB_INFO_1W*>(middle.data())->JobId, 9u);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(list(3, 10), Bytes());
    EXPECT_EQ(count, 0u);
    const Bytes one = Ask(
        [&](LPBYTE to, DWORD size, LPDWORD want) { return GetJobW(fax_, 7, 2, to, size, want); });
    const auto& job = *reinterpret_cast<const JOB_INFO_2W*>(one.data());
    const DWORD numbers[] = {job.JobId,      job.Status,       job.Priority,       job.Position,
                             job.TotalPages, job.PagesPrinted, job.StartTime,      job.UntilTime,
                             job.Size,       job.Time,         job.Submitted.wYear};
    const DWORD expected[] = {7, 0x10, 99, 1, 5, 4, 0x20, 0x21, 0x1000, 0x22, 2026};
    EXPECT_TRUE(std::equal(std::begin(numbers), std::end(numbers), expected));
    std::u16string texts;
    for (LPCWSTR text :
         {job.pPrinterName, job.pMachineName, job.pUserName, job.pDocument, job.pDatatype,
          job.pStatus, job.pNotifyName, job.pPrintProcessor, job.pParameters, job.pDriverName}) {
        texts += Text(text) + u'|';
    }
    EXPECT_EQ(texts, u"Fax|PC|Mo|First|RAW|Printing|Jo|winprint|p|Fax Driver|");
    EXPECT_EQ(ErrorUnless(GetJobW(fax_, 8, 2, nullptr, 0, &needed)), 87u);
    EXPECT_EQ(ErrorUnless(GetJobW(fax_, 7, 3, nullptr, 0, &needed)), DWORD{ERROR_INVALID_LEVEL});
}

TEST_F(Spooler, TheUsersBlockIsKeptWhole) {
    EXPECT_EQ(UserBlock(), Bytes());
    Bytes block = Block(220, 4180), smallest = Block(76, 0), small = Block(220, 0);
    for (Bytes* whole : {&smallest, &block}) {
        PRINTER_INFO_9W record{AsDevMode(*whole)};
        EXPECT_EQ(Set(fax_, 9, &record), 0u);
        EXPECT_EQ(UserBlock(), *whole);
    }
    small[offsetof(DEVMODEW, dmSize)] = 75;
    PRINTER_INFO_9W record{AsDevMode(small)};
    EXPECT_EQ(Set(fax_, 9, &record), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(UserBlock(), block);
    record.pDevMode = nullptr;
    EXPECT_EQ(Set(fax_, 9, &record), 0u);
    EXPECT_EQ(UserBlock(), Bytes());
    EXPECT_EQ(Set(fax_, 8, &record), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(Set(fax_, 9, nullptr), DWORD{ERROR_INVALID_PARAMETER});
    // A stored block that lies about its size is none; what lies behind one is left out.
    const Bytes whole = Block(220, 100);
    Bytes longer = whole;
    longer.resize(400);
    StoreUserBlock(longer);
    EXPECT_EQ(UserBlock(), whole);
    for (const std::size_t size : {319, 76, 75, 1}) {
        longer.resize(size);
        StoreUserBlock(longer);
        EXPECT_EQ(UserBlock(), Bytes());
    }
}

TEST_F(Spooler, ChangesNeedTheRightAndAKnownDriver) {
    const HANDLE administrator = Open(u"Fax", PRINTER_ALL_ACCESS);
    Bytes buffer = Get(administrator, 2), block = Block(220, 3), bad = Block(10, 100);
    auto& record = *reinterpret_cast<PRINTER_INFO_2W*>(buffer.data());
    std::u16string location = u"Attic", nobodys = u"Nobody's";
    record.pLocation = location.data();
    record.pDevMode = AsDevMode(block);
    record.pComment = nullptr;
    record.Priority = 44;
    record.Status = 7;
    EXPECT_EQ(Set(fax_, 2, &record), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(Set(administrator, 2, &record), 0u);
    const Bytes after = Get(fax_, 2);
    const auto& changed = *reinterpret_cast<const PRINTER_INFO_2W*>(after.data());
    EXPECT_EQ(Text(changed.pLocation), location);
    EXPECT_EQ(Text(changed.pComment), u"Sends");
    EXPECT_EQ(changed.Priority, 44u);
    EXPECT_EQ(changed.Status, 1u);
    EXPECT_EQ(std::memcmp(changed.pDevMode, block.data(), block.size()), 0);
    record.pDevMode = AsDevMode(bad);
    EXPECT_EQ(Set(administrator, 2, &record), DWORD{ERROR_INVALID_PARAMETER});
    record.pDevMode = nullptr;
    record.pPrinterName = nobodys.data();
    EXPECT_EQ(Set(administrator, 2, &record), DWORD{ERROR_NOT_SUPPORTED});
    record.pPrinterName = nullptr;
    record.pDriverName = nobodys.data();
    EXPECT_EQ(Set(administrator, 2, &record), DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
    ClosePrinter(administrator);
}

TEST_F(Spooler, PrinterDataFollowsItsOwnProtocol) {
    DWORD type = 0, needed = 0;
    WCHAR text[6];
    const auto ask = [&](std::u16string name, DWORD size) {
        return GetPrinterDataW(fax_, name.data(), &type, reinterpret_cast<LPBYTE>(text), size,
                               &needed);
    };
    EXPECT_EQ(ask(u"tray", 11), DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(needed, 12u);
    EXPECT_EQ(ask(u"tray", 12), 0u);
    EXPECT_EQ(Text(text), u"Upper");
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(ask(u"none", 12), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(ask(u"Empty", 0), 0u);
}

TEST_F(Spooler, DocumentPropertiesMovesTheBlockWhole) {
    const auto ask = [&](Bytes* output, Bytes* input, DWORD mode) {
        return DocumentPropertiesW(nullptr, fax_, nullptr,
                                   output == nullptr ? nullptr : AsDevMode(*output),
                                   input == nullptr ? nullptr : AsDevMode(*input), mode);
    };
    Bytes block = Block(220, 80), start = Block(220, 0), output(300);
    EXPECT_EQ(ErrorUnless(ask(nullptr, nullptr, 0) != -1), DWORD{ERROR_INVALID_DATA});
    EXPECT_EQ(ErrorUnless(ask(&output, &block, DM_OUT_BUFFER) != -1), DWORD{ERROR_INVALID_DATA});
    EXPECT_EQ(ask(nullptr, &block, 0), 300);
    EXPECT_EQ(ask(&output, &block, DM_IN_BUFFER), IDOK);
    EXPECT_EQ(output, Bytes(300)) << "no output was asked for";
    EXPECT_EQ(ask(&output, &block, DM_IN_BUFFER | DM_OUT_BUFFER), IDOK);
    EXPECT_EQ(output, block);
    StoreUserBlock(start);
    EXPECT_EQ(ask(nullptr, nullptr, 0), 220);
    EXPECT_EQ(ask(&output, nullptr, DM_OUT_BUFFER), IDOK);
    EXPECT_EQ(Bytes(output.begin(), output.begin() + 220), start);
    EXPECT_EQ(ask(&output, nullptr, DM_IN_PROMPT | DM_OUT_BUFFER), IDCANCEL);
    block[offsetof(DEVMODEW, dmSize)] = 10;
    EXPECT_EQ(ErrorUnless(ask(nullptr, &block, 0) != -1), DWORD{ERROR_INVALID_PARAMETER});
}

}  // namespace
