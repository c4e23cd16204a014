#include "support/machine.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
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

// One of the registry's files, and what it held at first.
class Hive {
  public:
    explicit Hive(const char* name)
        : path_(std::string(std::getenv("QV_HOST_ROOT")) + "/registry/" + name + ".reg") {}

    void Write(const std::string& text) {
        const std::string fresh = path_ + ".new";
        std::ofstream(fresh, std::ios::binary) << text;
        std::filesystem::rename(fresh, path_);
    }
    void Keep() {
        std::ostringstream text;
        text << std::ifstream(path_, std::ios::binary).rdbuf();
        kept_ = text.str();
        stat(path_.c_str(), &stamp_);
    }
    void Restore() {
        struct stat now = {};
        stat(path_.c_str(), &now);
        // Every change is a new file; the number of an old one may come back with another time.
        if (now.st_ino == stamp_.st_ino && now.st_mtim.tv_sec == stamp_.st_mtim.tv_sec &&
            now.st_mtim.tv_nsec == stamp_.st_mtim.tv_nsec) {
            return;
        }
        Write(kept_);
        stat(path_.c_str(), &stamp_);
    }

  private:
    std::string path_, kept_;
    struct stat stamp_ = {};
};

struct Machine {
    Machine() {
        machine.Write(kMachine);
        QV_DEVMODE settings;
        if (!SetGlobalDevMode(TEXT("Fax"), &settings, nullptr).IsSuccess()) std::abort();
        machine.Keep();
        user.Keep();
    }
    Hive machine{"HKEY_LOCAL_MACHINE"}, user{"HKEY_CURRENT_USER"};
};

}  // namespace

void ResetMachine() {
    static Machine the_machine;
    the_machine.machine.Restore();
    the_machine.user.Restore();
}

}  // namespace fuzz
