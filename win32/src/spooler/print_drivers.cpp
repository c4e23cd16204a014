// Printer drivers, their folder, and port monitors.
#include "spooler/print_keys.h"
#include "spooler/record_buffer.h"
#include "text/case_fold.h"
#include "text/host_text.h"

using namespace host;

namespace {

using Drivers = RecordBuffer<DRIVER_INFO_3W>;

// Accepts only this machine and its one environment.
DWORD CheckPlace(LPCWSTR server, LPCWSTR environment) {
    if (!ViewOf(server).empty()) return ERROR_INVALID_NAME;
    const WideView name = ViewOf(environment);
    return name.empty() || SameFileName(name, kEnvironment) ? NO_ERROR : ERROR_INVALID_ENVIRONMENT;
}

// The registry holds bare file names. The files are in the folder of the driver's version.
std::u16string DriverFile(const std::u16string& name, DWORD version) {
    if (name.empty() || name.find_first_of(u"\\/:") != name.npos) return name;
    std::u16string path = kDriverFolder;
    path += u'\\';
    for (const char digit : std::to_string(version)) path += static_cast<WCHAR>(digit);
    return path + u'\\' + name;
}

void AddDriver(const RegKey& key, Drivers& drivers) {
    constexpr struct {
        LPWSTR DRIVER_INFO_3W::*member;
        const WCHAR* name;
    } kFiles[] = {
        {&DRIVER_INFO_3W::pDriverPath, u"Driver"},
        {&DRIVER_INFO_3W::pDataFile, u"Data File"},
        {&DRIVER_INFO_3W::pConfigFile, u"Configuration File"},
        {&DRIVER_INFO_3W::pHelpFile, u"Help File"},
    };
    const PrintValues values(key);
    const DWORD version = NumberValue(values, u"Version", 3);
    drivers.Add().cVersion = version;
    drivers.Text(&DRIVER_INFO_3W::pName, key.Name());
    drivers.Text(&DRIVER_INFO_3W::pEnvironment, kEnvironment);
    for (const auto& row : kFiles) {
        drivers.Text(row.member, DriverFile(TextValue(values, row.name), version));
    }
    std::u16string dependent;
    for (const std::u16string& name : TextsValue(values, u"Dependent Files")) {
        dependent += DriverFile(name, version) + u'\0';
    }
    drivers.Text(&DRIVER_INFO_3W::pDependentFiles, dependent);
    drivers.Text(&DRIVER_INFO_3W::pMonitorName, TextValue(values, u"Monitor"));
    drivers.Text(&DRIVER_INFO_3W::pDefaultDataType, TextValue(values, u"Datatype"));
}

}  // namespace

BOOL EnumPrinterDriversW(LPWSTR server, LPWSTR environment, DWORD level, LPBYTE buffer, DWORD size,
                         LPDWORD needed, LPDWORD count) {
    if (!BufferIsGiven(buffer, size, needed) || count == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (level != 3) return Fail(ERROR_INVALID_LEVEL);
    const DWORD place = CheckPlace(server, environment);
    if (place != NO_ERROR) return Fail(place);
    Drivers drivers;
    const LSTATUS code = ReadPrintKey(HKEY_LOCAL_MACHINE, DriversPath(), [&](const RegKey& all) {
        for (const RegKey& key : all.Keys()) AddDriver(key, drivers);
    });
    return Succeeded(code) ? drivers.Deliver(buffer, size, needed, count) : FALSE;
}

BOOL GetPrinterDriverDirectoryW(LPWSTR server, LPWSTR environment, DWORD level, LPBYTE buffer,
                                DWORD size, LPDWORD needed) {
    if (!BufferIsGiven(buffer, size, needed)) return Fail(ERROR_INVALID_PARAMETER);
    if (level != 1) return Fail(ERROR_INVALID_LEVEL);
    const DWORD place = CheckPlace(server, environment);
    if (place != NO_ERROR) return Fail(place);
    *needed = sizeof kDriverFolder;
    if (size < sizeof kDriverFolder) return Fail(ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(buffer, kDriverFolder, sizeof kDriverFolder);
    return TRUE;
}

BOOL EnumMonitorsW(LPWSTR server, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed,
                   LPDWORD count) {
    if (!BufferIsGiven(buffer, size, needed) || count == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (level != 2) return Fail(ERROR_INVALID_LEVEL);
    if (!ViewOf(server).empty()) return Fail(ERROR_INVALID_NAME);
    RecordBuffer<MONITOR_INFO_2W> monitors;
    const LSTATUS code = ReadPrintKey(HKEY_LOCAL_MACHINE, MonitorsPath(), [&](const RegKey& all) {
        for (const RegKey& key : all.Keys()) {
            monitors.Add();
            monitors.Text(&MONITOR_INFO_2W::pName, key.Name());
            monitors.Text(&MONITOR_INFO_2W::pEnvironment, kEnvironment);
            monitors.Text(&MONITOR_INFO_2W::pDLLName, TextValue(PrintValues(key), u"Driver"));
        }
    });
    return Succeeded(code) ? monitors.Deliver(buffer, size, needed, count) : FALSE;
}
