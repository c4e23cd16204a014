// Printers that a test installs, with one interface for both hosts. On Windows they are real: the
// drivers' configuration modules stand beside the test program and are installed through the
// spooler's calls. On Linux they are the registry keys in which the host layer keeps its spooler.
#pragma once

#include <windows.h>

#include <winspool.h>

#include <string>
#include <vector>

namespace test {

using Text = std::basic_string<WCHAR>;
using Bytes = std::vector<BYTE>;

/// Drivers that every TestPrinters installs: the first one's settings block has 4400 bytes, the
/// other one's 284.
inline const Text kProductDriver = TEXT("Vantrel Driver");
inline const Text kOtherDriver = TEXT("QV Other Driver");
inline constexpr DWORD kProductBlockBytes = 4400;
inline constexpr DWORD kOtherBlockBytes = 284;

/// A settings block of `bytes` bytes: the public part filled in for `printer`, zeros behind it.
Bytes PublicBlock(const Text& printer, DWORD bytes);

/// Installs two drivers and whatever a test adds; takes all of it away again at its end. A step
/// that the spooler refuses throws std::runtime_error with the call and the error code. For one
/// test at a time: names are the machine's.
class TestPrinters {
  public:
    TestPrinters();
    ~TestPrinters();
    TestPrinters(const TestPrinters&) = delete;
    TestPrinters& operator=(const TestPrinters&) = delete;

    void InstallPrinter(const Text& name, const Text& driver = kProductDriver,
                        const Text& port = TEXT("LPT1:"));
    /// The block that level 9 answers with (and on Windows under Wine level 2 as well, which keeps
    /// one block per printer).
    void SetUserDevMode(const Text& printer, const Bytes& block);
    /// The block that level 2 answers with.
    void SetDefaultDevMode(const Text& printer, const Bytes& block);
    /// A text of the printer's data, as GetPrinterDataW reads it.
    void SetPrinterText(const Text& printer, const Text& name, const Text& value);
    void InstallMonitor(const Text& name, const Text& dll);

    /// Whether a printer can be without a user's block. Wine answers with one of its own.
    static bool PrintersCanLackDevMode();

  private:
    void AddDriver(const Text& name, const Text& module);
    void RemoveDriver(const Text& name);
    void RemovePrinter(const Text& name);

    std::vector<Text> drivers_, printers_, monitors_;
};

}  // namespace test
