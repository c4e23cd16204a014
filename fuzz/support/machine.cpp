#include "support/machine.h"

#include <qv_host.h>

#include <cstdlib>
#include <string>

#include "driver_devmode/qv_devmode.h"
#include "printer_query/spooler.h"
#include "support/input.h"

namespace fuzz {

namespace {

constexpr char kMachine[] = R"(Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\Software\Halvorn\Vantrel]
"InstallPath"="C:\\Vantrel"
"Language"="en"
"Logfile"="Disabled"

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Printers\Fax]
"Name"="Fax"
"Printer Driver"="Vantrel Driver"
"Port"="VFAX1:"
"Attributes"=dword:00000040

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Printers\Other]
"Name"="Other"
"Printer Driver"="Other Driver"
"Port"="LPT1:"

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Environments\Windows x64\Drivers\Version-3\Vantrel Driver]
"Version"=dword:00000003
"Driver"="C:\\Vantrel\\qv.dll"
"Configuration File"="C:\\Vantrel\\qv_ui.dll"

[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Print\Monitors\Monitor]
"Driver"="qv_mon.dll"
)";

// What each input changes is one group of changes, and is taken back.
struct Machine {
    Machine() {
        WCHAR problem[200];
        WriteFile("machine.reg",
                  {reinterpret_cast<const std::uint8_t*>(kMachine), sizeof(kMachine) - 1});
        const std::string path = FilePath("machine.reg");
        const std::u16string wide(path.begin(), path.end());
        if (!QvHostImport(wide.c_str(), problem, 200)) std::abort();
        QV_DEVMODE settings;
        if (!SetGlobalDevMode(TEXT("Fax"), &settings, nullptr).IsSuccess()) std::abort();
    }
};

}  // namespace

void ResetMachine() {
    static const Machine the_machine;
    QvHostEndChanges(FALSE);
    QvHostBeginChanges();
}

}  // namespace fuzz
