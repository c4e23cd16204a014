// Test printers on Windows: installed through the spooler, with our own configuration modules.
#include <stdexcept>

#include "support/test_printers.h"

namespace test {

namespace {

WCHAR kEnvironment[] = TEXT("Windows x64");
WCHAR kDataFile[] = TEXT("qv_test.dat");

void Require(const char* call, bool succeeded) {
    if (succeeded) return;
    throw std::runtime_error(std::string(call) + " failed: " + std::to_string(GetLastError()));
}

/// An open printer with every right, closed at the end.
class OpenedPrinter {
  public:
    explicit OpenedPrinter(Text name) {
        PRINTER_DEFAULTSW defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
        Require("OpenPrinterW", OpenPrinterW(name.data(), &handle_, &defaults) != 0);
    }
    ~OpenedPrinter() { ClosePrinter(handle_); }
    OpenedPrinter(const OpenedPrinter&) = delete;
    OpenedPrinter& operator=(const OpenedPrinter&) = delete;

    HANDLE get() const { return handle_; }

  private:
    HANDLE handle_ = nullptr;
};

Text DriverFolder() {
    WCHAR folder[MAX_PATH] = {};
    DWORD needed = 0;
    Require("GetPrinterDriverDirectoryW",
            GetPrinterDriverDirectoryW(nullptr, kEnvironment, 1, reinterpret_cast<BYTE*>(folder),
                                       sizeof(folder), &needed) != 0);
    return folder;
}

Text ProgramFolder() {
    WCHAR file[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, file, MAX_PATH);
    const Text path = file;
    return path.substr(0, path.find_last_of(TEXT('\\')));
}

void MakeDataFile(const Text& file) {
    const HANDLE handle = CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    Require("CreateFileW", handle != INVALID_HANDLE_VALUE);
    CloseHandle(handle);
}

}  // namespace

void TestPrinters::AddDriver(const Text& name, const Text& module) {
    const Text folder = DriverFolder() + TEXT("\\");
    Require("CopyFileW", CopyFileW((ProgramFolder() + TEXT("\\") + module).c_str(),
                                   (folder + module).c_str(), FALSE) != 0);
    MakeDataFile(folder + kDataFile);
    Text driver_name = name, file = module, datatype = TEXT("RAW");
    DRIVER_INFO_3W info{};
    info.cVersion = 3;
    info.pName = driver_name.data();
    info.pEnvironment = kEnvironment;
    info.pDriverPath = file.data();
    info.pConfigFile = file.data();
    info.pDataFile = kDataFile;
    info.pDefaultDataType = datatype.data();
    Require("AddPrinterDriverW",
            AddPrinterDriverW(nullptr, 3, reinterpret_cast<BYTE*>(&info)) != 0);
    drivers_.push_back(name);
}

void TestPrinters::InstallPrinter(const Text& name, const Text& driver, const Text& port) {
    Text printer = name, driver_name = driver, port_name = port;
    Text processor = TEXT("winprint"), datatype = TEXT("RAW");
    PRINTER_INFO_2W info{};
    info.pPrinterName = printer.data();
    info.pDriverName = driver_name.data();
    info.pPortName = port_name.data();
    info.pPrintProcessor = processor.data();
    info.pDatatype = datatype.data();
    const HANDLE handle = AddPrinterW(nullptr, 2, reinterpret_cast<BYTE*>(&info));
    Require("AddPrinterW", handle != nullptr);
    printers_.push_back(name);
    ClosePrinter(handle);
}

void TestPrinters::SetUserDevMode(const Text& printer, const Bytes& block) {
    Bytes copy = block;
    PRINTER_INFO_9W info{reinterpret_cast<DEVMODEW*>(copy.data())};
    const OpenedPrinter opened(printer);
    Require("SetPrinterW", SetPrinterW(opened.get(), 9, reinterpret_cast<BYTE*>(&info), 0) != 0);
}

void TestPrinters::SetDefaultDevMode(const Text& printer, const Bytes& block) {
    Bytes copy = block;
    PRINTER_INFO_8W info{reinterpret_cast<DEVMODEW*>(copy.data())};
    const OpenedPrinter opened(printer);
    Require("SetPrinterW", SetPrinterW(opened.get(), 8, reinterpret_cast<BYTE*>(&info), 0) != 0);
}

bool TestPrinters::PrintersCanLackDevMode() {
    return false;
}

void TestPrinters::RemoveDriver(const Text& name) {
    Text driver = name;
    DeletePrinterDriverW(nullptr, kEnvironment, driver.data());
}

void TestPrinters::RemovePrinter(const Text& name) {
    const OpenedPrinter opened(name);
    DeletePrinter(opened.get());
}

}  // namespace test
