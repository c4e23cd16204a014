// The spooler over the registry's keys: records, buffers, refusals.
#include <gtest/gtest.h>
#include <qv_host.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>
#include <winspool.h>

#include <csignal>
#include <cstring>
#include <span>
#include <sstream>

#include "support/fresh_host_root.h"
#include "support/last_error.h"
#include "support/page_text.h"
#include "support/source_folder.h"
#include "support/test_registry.h"

using test::ErrorUnless;

namespace {

using Bytes = std::vector<BYTE>;

const std::u16string kPrinters = u"SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\";

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
    // As it is listed, whatever its key is named.
    test::TestKey(HKEY_LOCAL_MACHINE, kPrinters + u",,srv,a").Set(u"Name", u"\\\\srv\\a");
    for (const char16_t* name : {u"\\\\SRV\\a", u",,srv,a", u"plain one"}) {
        const HANDLE listed = Open(name);
        EXPECT_EQ(Get(listed, 2).empty(), false);
        EXPECT_TRUE(ClosePrinter(listed));
    }
    for (const char16_t* name : {u"None", u"", u"Fax\\Jobs"}) {
        EXPECT_EQ(ErrorUnless(Open(name)), DWORD{ERROR_INVALID_PRINTER_NAME});
    }
    EXPECT_FALSE(OpenPrinterW(nullptr, &printer, nullptr));
    EXPECT_EQ(ErrorUnless(Open(u"Fax", 1)), DWORD{ERROR_ACCESS_DENIED});
}

// Everything that the spooler lists, a line for each record.
TEST_F(Spooler, ListsAreWhatTheFileOfAnswersSays) {
    std::ostringstream lines;
    const auto line = [&lines](std::initializer_list<LPCWSTR> texts,
                               std::initializer_list<DWORD> numbers) {
        for (LPCWSTR text : texts)
            lines << (text == nullptr ? "null" : std::string(text, text + Text(text).size()))
                  << '|';
        for (const DWORD number : numbers) lines << ' ' << number;
        lines << '\n';
    };
    DWORD count = 0;
    const auto records = [&](auto type, const auto& call) {
        Bytes buffer = Ask(call);
        const auto* first = reinterpret_cast<const decltype(type)*>(buffer.data());
        return std::pair(std::move(buffer), std::span(first, count));
    };
    const auto printers = records(PRINTER_INFO_2W{}, [&](LPBYTE to, DWORD size, LPDWORD needed) {
        return EnumPrintersW(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 2, to, size,
                             needed, &count);
    });
    for (const PRINTER_INFO_2W& p : printers.second) {
        line({p.pServerName, p.pPrinterName, p.pShareName, p.pPortName, p.pDriverName, p.pComment,
              p.pLocation, p.pSepFile, p.pPrintProcessor, p.pDatatype, p.pParameters},
             {p.Attributes, p.Priority, p.Status, p.cJobs, p.pDevMode != nullptr});
    }
    const auto* last =
        reinterpret_cast<const BYTE*>(printers.second.back().pParameters) + sizeof(WCHAR);
    EXPECT_EQ(last, printers.first.data() + printers.first.size()) << "one buffer, all of it used";
    const auto drivers = records(DRIVER_INFO_3W{}, [&](LPBYTE to, DWORD size, LPDWORD needed) {
        return EnumPrinterDriversW(nullptr, nullptr, 3, to, size, needed, &count);
    });
    for (const DRIVER_INFO_3W& d : drivers.second) {
        line({d.pName, d.pEnvironment, d.pDriverPath, d.pDataFile, d.pConfigFile, d.pHelpFile,
              d.pMonitorName, d.pDefaultDataType},
             {d.cVersion});
        for (LPCWSTR file = d.pDependentFiles; *file != 0; file += Text(file).size() + 1)
            line({file}, {});
    }
    const auto monitors = records(MONITOR_INFO_2W{}, [&](LPBYTE to, DWORD size, LPDWORD needed) {
        return EnumMonitorsW(nullptr, 2, to, size, needed, &count);
    });
    for (const MONITOR_INFO_2W& m : monitors.second)
        line({m.pName, m.pEnvironment, m.pDLLName}, {});
    const Bytes directory = Ask([&](LPBYTE to, DWORD size, LPDWORD needed) {
        return GetPrinterDriverDirectoryW(nullptr, nullptr, 1, to, size, needed);
    });
    line({reinterpret_cast<LPCWSTR>(directory.data())}, {static_cast<DWORD>(directory.size())});
    for (const auto& [first, limit] : {std::pair(0, 10), {1, 1}, {3, 10}}) {
        const auto jobs = records(JOB_INFO_1W{}, [&](LPBYTE to, DWORD size, LPDWORD needed) {
            return EnumJobsW(fax_, static_cast<DWORD>(first), static_cast<DWORD>(limit), 1, to,
                             size, needed, &count);
        });
        lines << count << " jobs\n";
        for (const JOB_INFO_1W& j : jobs.second)
            line({j.pDocument, j.pUserName, j.pStatus}, {j.JobId, j.Priority, j.Position});
    }
    const Bytes one = Ask(
        [&](LPBYTE to, DWORD size, LPDWORD want) { return GetJobW(fax_, 7, 2, to, size, want); });
    const auto& j = *reinterpret_cast<const JOB_INFO_2W*>(one.data());
    line({j.pPrinterName, j.pMachineName, j.pUserName, j.pDocument, j.pDatatype, j.pStatus,
          j.pNotifyName, j.pPrintProcessor, j.pParameters, j.pDriverName},
         {j.JobId, j.Status, j.Priority, j.Position, j.TotalPages, j.PagesPrinted, j.StartTime,
          j.UntilTime, j.Size, j.Time, j.Submitted.wYear});
    EXPECT_EQ(lines.str(), test::PageText("../tests/data/spooler_answers.txt"));
    DWORD needed = 0;
    EXPECT_EQ(ErrorUnless(GetJobW(fax_, 8, 2, nullptr, 0, &needed)), 87u);
    EXPECT_EQ(ErrorUnless(GetJobW(fax_, 7, 3, nullptr, 0, &needed)), DWORD{ERROR_INVALID_LEVEL});
    std::u16string elsewhere = u"elsewhere";
    EXPECT_EQ(
        ErrorUnless(EnumPrinterDriversW(nullptr, elsewhere.data(), 3, nullptr, 0, &needed, &count)),
        DWORD{ERROR_INVALID_ENVIRONMENT});
    EXPECT_EQ(ErrorUnless(EnumMonitorsW(elsewhere.data(), 2, nullptr, 0, &needed, &count)),
              DWORD{ERROR_INVALID_NAME});
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
    // A stored block with a wrong size counts as missing. Bytes behind a block are left out.
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

// A printer and its user's block come and go in one change: a read sees both or none of them, also
// when it remembers the printer and has to look for the block. The other block is in its place.
TEST_F(Spooler, AReadIsOfOneMoment) {
    constexpr WCHAR kBlocks[] = u"Printers\\DevModePerUser";
    const Bytes block = Block(220, 4180);
    const HANDLE other = Open(u"plain one");
    test::TestKey(HKEY_CURRENT_USER, kBlocks).Set(u"Fax", block).Set(u"plain one", block);
    const pid_t changer = fork();
    for (bool there = false; changer == 0; there = !there) {
        QvHostBeginChanges();
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kPrinters + u"Fax").c_str());
        RegDeleteTreeW(HKEY_CURRENT_USER, kBlocks);
        test::TestKey blocks(HKEY_CURRENT_USER, kBlocks);
        blocks.Set(u"plain one", block);
        if (there) blocks.Set(u"Fax", block);
        if (there) test::TestKey(HKEY_LOCAL_MACHINE, kPrinters + u"Fax");
        QvHostEndChanges(TRUE);
    }
    Bytes buffer(5000);
    PRINTER_INFO_9W record{};
    for (int i = 0; i < 30000 && !HasFailure(); ++i) {
        DWORD needed = 0;
        GetPrinterW(other, 9, buffer.data(), 5000, &needed);
        if (!GetPrinterW(fax_, 9, buffer.data(), 5000, &needed)) continue;
        std::memcpy(&record, buffer.data(), sizeof record);
        EXPECT_NE(record.pDevMode, nullptr);
    }
    kill(changer, SIGKILL);
    waitpid(changer, nullptr, 0);
    EXPECT_TRUE(ClosePrinter(other));
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
