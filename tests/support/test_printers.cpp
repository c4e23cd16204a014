// The part of the test printers that is the same on both hosts.
#include "support/test_printers.h"

#include <algorithm>
#include <cstring>

#include "support/test_registry.h"

namespace test {

namespace {
const Text kMonitors = TEXT("System\\CurrentControlSet\\Control\\Print\\Monitors\\");
const Text kPrinters = TEXT("System\\CurrentControlSet\\Control\\Print\\Printers\\");
}  // namespace

Bytes PublicBlock(const Text& printer, DWORD bytes) {
    DEVMODEW mode{};
    const size_t length = std::min(printer.size(), std::size(mode.dmDeviceName) - 1);
    std::copy_n(printer.begin(), length, mode.dmDeviceName);
    mode.dmSpecVersion = 0x0401;
    mode.dmDriverVersion = 1;
    mode.dmSize = sizeof(mode);
    mode.dmDriverExtra = static_cast<WORD>(bytes - sizeof(mode));
    Bytes block(bytes);
    std::memcpy(block.data(), &mode, sizeof(mode));
    return block;
}

TestPrinters::TestPrinters() {
    AddDriver(kProductDriver, TEXT("qv_test_driver.dll"));
    AddDriver(kOtherDriver, TEXT("qv_other_driver.dll"));
}

TestPrinters::~TestPrinters() {
    for (const Text& name : printers_) RemovePrinter(name);
    for (const Text& name : drivers_) RemoveDriver(name);
    for (const Text& name : monitors_) {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kMonitors + name).c_str());
    }
}

void TestPrinters::InstallMonitor(const Text& name, const Text& dll) {
    monitors_.push_back(name);
    TestKey(HKEY_LOCAL_MACHINE, kMonitors + name).Set(TEXT("Driver"), dll);
}

void TestPrinters::SetPrinterText(const Text& printer, const Text& name, const Text& value) {
    TestKey(HKEY_LOCAL_MACHINE, kPrinters + printer + TEXT("\\PrinterDriverData"))
        .Set(name.c_str(), value);
}

}  // namespace test
