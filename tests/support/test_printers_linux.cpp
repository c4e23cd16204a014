// Test printers on the Linux host: the keys that hold the spooler's state.
#include "support/test_printers.h"
#include "support/test_registry.h"

namespace test {

namespace {

const Text kPrint = TEXT("System\\CurrentControlSet\\Control\\Print\\");
const Text kDrivers = kPrint + TEXT("Environments\\Windows x64\\Drivers\\Version-3\\");
const Text kPrinters = kPrint + TEXT("Printers\\");
const Text kUserBlocks = TEXT("Printers\\DevModePerUser");

}  // namespace

void TestPrinters::AddDriver(const Text& name, const Text& module) {
    drivers_.push_back(name);
    TestKey(HKEY_LOCAL_MACHINE, kDrivers + name)
        .Set(TEXT("Version"), 3)
        .Set(TEXT("Driver"), module)
        .Set(TEXT("Configuration File"), module)
        .Set(TEXT("Data File"), TEXT("qv_test.dat"))
        .Set(TEXT("Monitor"), TEXT(""))
        .Set(TEXT("Datatype"), TEXT("RAW"));
}

void TestPrinters::InstallPrinter(const Text& name, const Text& driver, const Text& port) {
    printers_.push_back(name);
    TestKey(HKEY_LOCAL_MACHINE, kPrinters + name)
        .Set(TEXT("Name"), name)
        .Set(TEXT("Printer Driver"), driver)
        .Set(TEXT("Port"), port)
        .Set(TEXT("Print Processor"), TEXT("winprint"))
        .Set(TEXT("Datatype"), TEXT("RAW"))
        .Set(TEXT("Attributes"), DWORD{0})
        .Set(TEXT("Status"), DWORD{0});
}

void TestPrinters::SetUserDevMode(const Text& printer, const Bytes& block) {
    TestKey(HKEY_CURRENT_USER, kUserBlocks).Set(printer.c_str(), block);
}

void TestPrinters::SetDefaultDevMode(const Text& printer, const Bytes& block) {
    TestKey(HKEY_LOCAL_MACHINE, kPrinters + printer).Set(TEXT("Default DevMode"), block);
}

bool TestPrinters::PrintersCanLackDevMode() {
    return true;
}

void TestPrinters::RemoveDriver(const Text& name) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kDrivers + name).c_str());
}

void TestPrinters::RemovePrinter(const Text& name) {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kPrinters + name).c_str());
    HKEY blocks = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, kUserBlocks.c_str(), 0, KEY_ALL_ACCESS, &blocks) != 0) {
        return;
    }
    RegDeleteValueW(blocks, name.c_str());
    RegCloseKey(blocks);
}

}  // namespace test
