// What the library relies on in the spooler, the same on both hosts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/test_printers.h"

namespace {

using test::Bytes;
using test::PublicBlock;
using test::TestPrinters;
using test::Text;

class Opened {
  public:
    explicit Opened(Text name) { OpenPrinterW(name.data(), &handle, nullptr); }
    ~Opened() { ClosePrinter(handle); }
    HANDLE handle = nullptr;
};

/// A product block whose private part is a pattern.
Bytes PatternBlock(const Text& printer, BYTE seed) {
    Bytes block = PublicBlock(printer, test::kProductBlockBytes);
    for (size_t i = sizeof(DEVMODEW); i < block.size(); ++i) block[i] = static_cast<BYTE>(i + seed);
    return block;
}

DEVMODEW& ModeOf(Bytes& block) {
    return *reinterpret_cast<DEVMODEW*>(block.data());
}

bool SamePrivatePart(const Bytes& block, const DEVMODEW* mode) {
    return std::memcmp(block.data() + sizeof(DEVMODEW), mode + 1,
                       block.size() - sizeof(DEVMODEW)) == 0;
}

TEST(SpoolerContract, MissingPrinterIs1801) {
    Text name = TEXT("No such printer");
    HANDLE handle = nullptr;
    EXPECT_FALSE(OpenPrinterW(name.data(), &handle, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PRINTER_NAME});
}

TEST(SpoolerContract, Level9KeepsTheWholeBlock) {
    TestPrinters printers;
    printers.InstallPrinter(TEXT("QV Fax"));
    Bytes block = PatternBlock(TEXT("QV Fax"), 3);
    ModeOf(block).dmCopies = 7;
    printers.SetUserDevMode(TEXT("QV Fax"), block);

    const Opened printer(TEXT("QV Fax"));
    DWORD needed = 0;
    EXPECT_FALSE(GetPrinterW(printer.handle, 9, nullptr, 0, &needed));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    ASSERT_GE(needed, sizeof(PRINTER_INFO_9W) + test::kProductBlockBytes);
    Bytes answer(needed);
    ASSERT_TRUE(GetPrinterW(printer.handle, 9, answer.data(), needed, &needed));
    const DEVMODEW* mode = reinterpret_cast<PRINTER_INFO_9W*>(answer.data())->pDevMode;
    ASSERT_NE(mode, nullptr);
    EXPECT_EQ(mode->dmSize + mode->dmDriverExtra, int{test::kProductBlockBytes});
    EXPECT_EQ(mode->dmCopies, 7);
    EXPECT_TRUE(SamePrivatePart(block, mode));
}

TEST(SpoolerContract, DocumentPropertiesMergesTheBlockWhole) {
    TestPrinters printers;
    Text name = TEXT("QV Fax");
    printers.InstallPrinter(name);
    const Opened printer(name);
    Bytes in = PatternBlock(name, 9);
    EXPECT_EQ(DocumentPropertiesW(nullptr, printer.handle, name.data(), nullptr, &ModeOf(in), 0),
              LONG{test::kProductBlockBytes});
    Bytes out(test::kProductBlockBytes + 8, 0xEE);
    EXPECT_EQ(DocumentPropertiesW(nullptr, printer.handle, name.data(), &ModeOf(out), &ModeOf(in),
                                  DM_IN_BUFFER | DM_OUT_BUFFER),
              IDOK);
    EXPECT_TRUE(std::equal(in.begin(), in.end(), out.begin()));
    EXPECT_EQ(out[test::kProductBlockBytes], 0xEE);
}

TEST(SpoolerContract, MonitorsAndPrinterTextsAreListed) {
    TestPrinters printers;
    printers.InstallPrinter(TEXT("QV Fax"));
    printers.SetPrinterText(TEXT("QV Fax"), TEXT("Line"), TEXT("2"));
    printers.InstallMonitor(TEXT("QV Monitor"), TEXT("qvmon.dll"));

    DWORD needed = 0, count = 0, type = 0;
    const Opened printer(TEXT("QV Fax"));
    WCHAR line[8] = {};
    Text value = TEXT("Line");
    EXPECT_EQ(GetPrinterDataW(printer.handle, value.data(), &type, nullptr, 0, &needed),
              DWORD{ERROR_MORE_DATA});
    ASSERT_EQ(needed, 4u);
    EXPECT_EQ(GetPrinterDataW(printer.handle, value.data(), &type, reinterpret_cast<BYTE*>(line),
                              needed, &needed),
              DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Text(line), TEXT("2"));

    EXPECT_FALSE(EnumMonitorsW(nullptr, 2, nullptr, 0, &needed, &count));
    Bytes answer(needed);
    ASSERT_TRUE(EnumMonitorsW(nullptr, 2, answer.data(), needed, &needed, &count));
    const auto* monitors = reinterpret_cast<MONITOR_INFO_2W*>(answer.data());
    EXPECT_TRUE(std::any_of(monitors, monitors + count, [](const MONITOR_INFO_2W& monitor) {
        return Text(monitor.pName) == TEXT("QV Monitor") &&
               Text(monitor.pDLLName) == TEXT("qvmon.dll");
    }));
}

}  // namespace
