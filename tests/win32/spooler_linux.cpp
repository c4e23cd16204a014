// The spooler over the registry's keys: records, buffers, refusals.
#include <gtest/gtest.h>
#include <qv_host.h>
#include <windows.h>
#include <winspool.h>

#include <cstring>
#include <fstream>

#include "support/fresh_host_root.h"

namespace {

using Bytes = std::vector<BYTE>;

constexpr char kMachine[] = R"(Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Printers\Fax]
"Name"="Fax"
"Printer Driver"="Fax Driver"
"Port"="FAX:"
"Description"="Sends"
"Attributes"=dword:00000040
"Status"=dword:00000001

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Printers\Fax\PrinterDriverData]
"Tray"="Upper"
"Empty"=hex(1):

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Printers\Fax\Jobs\12]
"Document"="Second"
"Position"=dword:00000002

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Printers\Fax\Jobs\7]
"Document"="First"
"Position"=dword:00000001
"Status"=dword:00000010
"StatusText"="Printing"
"Submitted"=hex:ea,07,0b,00,02,00,18,00,14,00,35,00,1c,00,00,00
"Size"=dword:00001000

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Printers\Fax\Jobs\x]

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Printers\Plain]
"Port"=dword:00000001

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Environments\Windows x64\Drivers\Version-3\Fax Driver]
"Version"=dword:00000003
"Driver"="fax.dll"
"Configuration File"="D:\\own\\faxui.dll"
"Dependent Files"=hex(7):61,00,00,00,62,00,00,00,00,00
"Datatype"="RAW"

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Monitors\Fax Port]
"Driver"="faxmon.dll"
)";

class Spooler : public testing::Test {
  protected:
    Spooler() {
        const std::string file = root_.Folder() + "/machine.reg";
        std::ofstream(file) << kMachine;
        EXPECT_TRUE(QvHostImport(std::u16string(file.begin(), file.end()).c_str(), nullptr, 0));
    }
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
    static Bytes Block(WORD size, WORD extra) {
        Bytes bytes(std::size_t{size} + extra, 0x5A);
        std::memcpy(&bytes[offsetof(DEVMODEW, dmSize)], &size, 2);
        std::memcpy(&bytes[offsetof(DEVMODEW, dmDriverExtra)], &extra, 2);
        return bytes;
    }
    static DEVMODEW* AsDevMode(Bytes& bytes) { return reinterpret_cast<DEVMODEW*>(bytes.data()); }
    static void SetValue(HKEY root, LPCWSTR path, LPCWSTR name, const Bytes& data) {
        HKEY key = nullptr;
        RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        RegSetValueExW(key, name, 0, REG_BINARY, data.data(), static_cast<DWORD>(data.size()));
        RegCloseKey(key);
    }
    static Bytes UserBlock(HANDLE printer) {
        const Bytes buffer = Get(printer, 9);
        const auto* block = reinterpret_cast<const PRINTER_INFO_9W*>(buffer.data())->pDevMode;
        if (block == nullptr) return {};
        const auto* bytes = reinterpret_cast<const BYTE*>(block);
        return {bytes, bytes + block->dmSize + block->dmDriverExtra};
    }

    const test::FreshHostRoot root_;
};

TEST_F(Spooler, OpensPrintersByNameAndRefusesTheRest) {
    HANDLE printer = Open(u"FAX", PRINTER_ALL_ACCESS);
    EXPECT_NE(printer, nullptr);
    EXPECT_TRUE(ClosePrinter(printer));
    EXPECT_FALSE(ClosePrinter(printer));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    for (const char16_t* name : {u"None", u"", u"Fax\\Jobs"}) {
        EXPECT_EQ(Open(name), nullptr);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PRINTER_NAME});
    }
    EXPECT_FALSE(OpenPrinterW(nullptr, &printer, nullptr));
    EXPECT_EQ(Open(u"Fax", 1), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(Spooler, ListsPrintersWithTheirStringsInOneBuffer) {
    DWORD count = 0;
    const Bytes buffer = Ask([&](LPBYTE to, DWORD size, LPDWORD needed) {
        return EnumPrintersW(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 2, to, size,
                             needed, &count);
    });
    ASSERT_EQ(count, 2u);
    const auto* records = reinterpret_cast<const PRINTER_INFO_2W*>(buffer.data());
    EXPECT_EQ(std::u16string(records[0].pDriverName), u"Fax Driver");
    EXPECT_EQ(std::u16string(records[0].pComment), u"Sends");
    EXPECT_EQ(records[0].Attributes, 0x40u);
    EXPECT_EQ(records[0].cJobs, 2u);
    EXPECT_EQ(std::u16string(records[1].pPrinterName), u"Plain");
    EXPECT_EQ(std::u16string(records[1].pPortName), u"");
    EXPECT_EQ(records[1].pDevMode, nullptr);
    const auto* last = reinterpret_cast<const BYTE*>(records[1].pParameters);
    EXPECT_EQ(last + sizeof(WCHAR), buffer.data() + buffer.size());
}

TEST_F(Spooler, AnEmptyMachineListsNothing) {
    const test::FreshHostRoot empty;
    DWORD needed = 9, count = 9;
    EXPECT_TRUE(EnumPrintersW(PRINTER_ENUM_LOCAL, nullptr, 2, nullptr, 0, &needed, &count));
    EXPECT_TRUE(EnumMonitorsW(nullptr, 2, nullptr, 0, &needed, &count));
    EXPECT_TRUE(EnumPrinterDriversW(nullptr, nullptr, 3, nullptr, 0, &needed, &count));
    EXPECT_EQ(needed + count, 0u);
    EXPECT_FALSE(EnumPrintersW(PRINTER_ENUM_LOCAL, nullptr, 4, nullptr, 0, &needed, &count));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_LEVEL});
}

TEST_F(Spooler, DriversAndMonitorsNameTheirFiles) {
    DWORD count = 0;
    const Bytes drivers = Ask([&](LPBYTE to, DWORD size, LPDWORD needed) {
        return EnumPrinterDriversW(nullptr, nullptr, 3, to, size, needed, &count);
    });
    const auto& driver = *reinterpret_cast<const DRIVER_INFO_3W*>(drivers.data());
    const std::u16string folder = u"C:\\Windows\\System32\\spool\\drivers\\x64";
    EXPECT_EQ(std::u16string(driver.pDriverPath), folder + u"\\3\\fax.dll");
    EXPECT_EQ(std::u16string(driver.pConfigFile), u"D:\\own\\faxui.dll");
    const std::u16string dependent = folder + u"\\3\\a";
    EXPECT_EQ(std::u16string(driver.pDependentFiles), dependent);
    EXPECT_EQ(std::u16string(driver.pDependentFiles + dependent.size() + 1), folder + u"\\3\\b");
    EXPECT_EQ(driver.cVersion, 3u);
    const Bytes monitors = Ask([&](LPBYTE to, DWORD size, LPDWORD needed) {
        return EnumMonitorsW(nullptr, 2, to, size, needed, &count);
    });
    const auto& monitor = *reinterpret_cast<const MONITOR_INFO_2W*>(monitors.data());
    EXPECT_EQ(std::u16string(monitor.pName), u"Fax Port");
    EXPECT_EQ(std::u16string(monitor.pDLLName), u"faxmon.dll");
    const Bytes directory = Ask([&](LPBYTE to, DWORD size, LPDWORD needed) {
        return GetPrinterDriverDirectoryW(nullptr, nullptr, 1, to, size, needed);
    });
    EXPECT_EQ(directory.size(), (folder.size() + 1) * sizeof(WCHAR));
}

TEST_F(Spooler, JobsComeInTheOrderOfTheQueue) {
    const HANDLE printer = Open(u"Fax");
    DWORD count = 0, needed = 0;
    const Bytes all = Ask([&](LPBYTE to, DWORD size, LPDWORD want) {
        return EnumJobsW(printer, 0, 10, 1, to, size, want, &count);
    });
    const auto* jobs = reinterpret_cast<const JOB_INFO_1W*>(all.data());
    ASSERT_EQ(count, 2u);
    EXPECT_EQ(jobs[0].JobId, 7u);
    EXPECT_EQ(jobs[0].Submitted.wYear, 2026);
    EXPECT_EQ(std::u16string(jobs[0].pStatus), u"Printing");
    EXPECT_EQ(std::u16string(jobs[1].pDocument), u"Second");
    EXPECT_EQ(jobs[1].Position, 2u);
    EXPECT_TRUE(EnumJobsW(printer, 2, 10, 1, nullptr, 0, &needed, &count));
    EXPECT_EQ(count, 0u);
    const Bytes one = Ask([&](LPBYTE to, DWORD size, LPDWORD want) {
        return GetJobW(printer, 7, 2, to, size, want);
    });
    const auto& job = *reinterpret_cast<const JOB_INFO_2W*>(one.data());
    EXPECT_EQ(job.Size, 0x1000u);
    EXPECT_EQ(std::u16string(job.pDriverName), u"Fax Driver");
    EXPECT_FALSE(GetJobW(printer, 8, 2, nullptr, 0, &needed));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    ClosePrinter(printer);
}

TEST_F(Spooler, TheUsersBlockIsKeptWhole) {
    const HANDLE printer = Open(u"fax");
    EXPECT_EQ(UserBlock(printer), Bytes());
    Bytes block = Block(220, 4180);
    PRINTER_INFO_9W record{AsDevMode(block)};
    EXPECT_TRUE(SetPrinterW(printer, 9, reinterpret_cast<LPBYTE>(&record), 0));
    EXPECT_EQ(UserBlock(printer), block);
    Bytes small = Block(220, 0);
    small[offsetof(DEVMODEW, dmSize)] = 40;
    record.pDevMode = AsDevMode(small);
    EXPECT_FALSE(SetPrinterW(printer, 9, reinterpret_cast<LPBYTE>(&record), 0));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(UserBlock(printer), block);
    record.pDevMode = nullptr;
    EXPECT_TRUE(SetPrinterW(printer, 9, reinterpret_cast<LPBYTE>(&record), 0));
    EXPECT_EQ(UserBlock(printer), Bytes());
    ClosePrinter(printer);
}

TEST_F(Spooler, ABlockThatLiesAboutItsSizeIsNone) {
    const HANDLE printer = Open(u"Fax");
    const Bytes whole = Block(220, 100);
    Bytes longer = whole;
    longer.resize(400);
    SetValue(HKEY_CURRENT_USER, u"Printers\\DevModePerUser", u"FAX", longer);
    EXPECT_EQ(UserBlock(printer), whole);
    for (const std::size_t size : {std::size_t{319}, std::size_t{75}, std::size_t{1}}) {
        SetValue(HKEY_CURRENT_USER, u"Printers\\DevModePerUser", u"Fax",
                 Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_EQ(UserBlock(printer), Bytes());
    }
    ClosePrinter(printer);
}

TEST_F(Spooler, ChangesNeedTheRightAndAKnownDriver) {
    const HANDLE user = Open(u"Fax"), administrator = Open(u"Fax", PRINTER_ALL_ACCESS);
    Bytes buffer = Get(administrator, 2), block = Block(220, 3);
    auto& record = *reinterpret_cast<PRINTER_INFO_2W*>(buffer.data());
    std::u16string location = u"Attic", driver = u"Nobody's";
    record.pLocation = location.data();
    record.pDevMode = AsDevMode(block);
    EXPECT_FALSE(SetPrinterW(user, 2, buffer.data(), 0));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_TRUE(SetPrinterW(administrator, 2, buffer.data(), 0));
    const Bytes after = Get(user, 2);
    const auto& changed = *reinterpret_cast<const PRINTER_INFO_2W*>(after.data());
    EXPECT_EQ(std::u16string(changed.pLocation), location);
    EXPECT_EQ(std::memcmp(changed.pDevMode, block.data(), block.size()), 0);
    record.pDriverName = driver.data();
    EXPECT_FALSE(SetPrinterW(administrator, 2, buffer.data(), 0));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
    ClosePrinter(user);
    ClosePrinter(administrator);
}

TEST_F(Spooler, PrinterDataFollowsItsOwnProtocol) {
    const HANDLE printer = Open(u"Fax");
    std::u16string tray = u"tray", none = u"none", empty = u"Empty";
    DWORD type = 0, needed = 0;
    WCHAR text[6];
    auto* bytes = reinterpret_cast<LPBYTE>(text);
    EXPECT_EQ(GetPrinterDataW(printer, tray.data(), &type, nullptr, 0, &needed),
              DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(needed, 12u);
    EXPECT_EQ(GetPrinterDataW(printer, tray.data(), &type, bytes, 12, &needed), 0u);
    EXPECT_EQ(std::u16string(text), u"Upper");
    EXPECT_EQ(GetPrinterDataW(printer, none.data(), nullptr, bytes, 12, &needed),
              DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(GetPrinterDataW(printer, empty.data(), nullptr, nullptr, 0, &needed), 0u);
    ClosePrinter(printer);
}

TEST_F(Spooler, DocumentPropertiesMovesTheBlockWhole) {
    const HANDLE printer = Open(u"Fax");
    const auto ask = [&](Bytes* output, Bytes* input, DWORD mode) {
        return DocumentPropertiesW(nullptr, printer, nullptr,
                                   output == nullptr ? nullptr : AsDevMode(*output),
                                   input == nullptr ? nullptr : AsDevMode(*input), mode);
    };
    Bytes block = Block(220, 80), start = Block(220, 0), output(300);
    EXPECT_EQ(ask(nullptr, nullptr, 0), -1);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_DATA});
    EXPECT_EQ(ask(nullptr, &block, 0), 300);
    EXPECT_EQ(ask(&output, &block, DM_IN_BUFFER | DM_OUT_BUFFER), IDOK);
    EXPECT_EQ(output, block);
    SetValue(HKEY_CURRENT_USER, u"Printers\\DevModePerUser", u"Fax", start);
    EXPECT_EQ(ask(nullptr, nullptr, 0), 220);
    EXPECT_EQ(ask(&output, nullptr, DM_OUT_BUFFER), IDOK);
    EXPECT_EQ(Bytes(output.begin(), output.begin() + 220), start);
    EXPECT_EQ(ask(&output, nullptr, DM_IN_PROMPT | DM_OUT_BUFFER), IDCANCEL);
    block[offsetof(DEVMODEW, dmSize)] = 10;
    EXPECT_EQ(ask(nullptr, &block, 0), -1);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    ClosePrinter(printer);
}

TEST_F(Spooler, OnlyABroadcastFindsNobodyAtOnce) {
    DWORD_PTR result = 5;
    EXPECT_TRUE(
        SendMessageTimeoutW(HWND_BROADCAST, WM_DEVMODECHANGE, 0, 0, SMTO_NORMAL, 500, &result));
    EXPECT_FALSE(SendMessageTimeoutW(nullptr, WM_USER, 0, 0, SMTO_NORMAL, 500, &result));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_WINDOW_HANDLE});
}

}  // namespace
