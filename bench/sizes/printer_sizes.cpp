// printer_sizes FOLDER COUNT...: for each COUNT makes a host root with so many printers, each
// with settings of the current user, their keys in no order, and answers a query for all of them.
// Prints the processor time per printer of the first query, which reads the registry, and of a
// second one. Fails when a printer of a larger machine takes more than twice the time of a printer
// of the smallest one. A little more is expected, because the registry finds a name by bisection.
#include <qv_rtl.h>
#include <qv_rtl_c.h>
#include <sys/resource.h>
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "driver_devmode/qvdm.h"
#include "log_file/log_recorder.h"
#include "mox_log/logger.h"
#include "xml/xml_doc.h"

namespace {

constexpr double kMostGrowth = 2;

double Seconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

std::string HexOf(const void* data, int size) {
    constexpr char kDigits[] = "0123456789abcdef";
    const auto* const bytes = static_cast<const unsigned char*>(data);
    std::string text = "hex:";
    for (int i = 0; i < size; ++i) {
        if (i > 0) text += ',';
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

// Every number below `count` once, far from order.
std::string PrinterName(int index, int count) {
    constexpr long long kStep = 7919;  // a prime: divides no count that is used
    return "Fax " + std::to_string(1000000 + index * kStep % count);
}

void WriteRoot(const std::filesystem::path& root, int count) {
    std::filesystem::create_directories(root / "registry");
    std::ofstream machine(root / "registry/HKEY_LOCAL_MACHINE.reg");
    machine << "Windows Registry Editor Version 5.00\n";
    for (int i = 0; i < count; ++i) {
        machine << "\n[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\"
                << PrinterName(i, count) << "]\n\"Port\"=\"VFAX" << i
                << ":\"\n\"Printer Driver\"=\"Vantrel Driver\"\n";
    }
    std::ofstream user(root / "registry/HKEY_CURRENT_USER.reg");
    user << "Windows Registry Editor Version 5.00\n\n"
            "[HKEY_CURRENT_USER\\Printers\\DevModePerUser]\n";
    TQVDM settings;
    const std::string block = HexOf(settings.GetDM(), QV_DEVMODE::Size());
    for (int i = 0; i < count; ++i) user << '"' << PrinterName(i, count) << "\"=" << block << '\n';
}

// Seconds; negative when the answer is not whole.
double Query(const std::filesystem::path& folder, const std::string& name, int count) {
    const std::string request = folder / "request.xml";
    const std::string response = folder / name;
    std::ofstream(request) << "<query linebreak=\"&#10;\" indentation=\"  \"><printer/></query>";
    const double began = Seconds();
    DoXMLA(request.c_str(), response.c_str());
    const double seconds = Seconds() - began;
    std::ifstream answer(response);
    int printers = 0;
    for (std::string line; std::getline(answer, line);) printers += line == "  <printer>" ? 1 : 0;
    std::filesystem::remove(response);
    return printers == count ? seconds : -1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: printer_sizes FOLDER COUNT...\n", stderr);
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    Mox::TLogRecorder recorder;
    const std::string log = folder / "query.log";
    const std::u16string log_name(log.begin(), log.end());
    if (!recorder.Open(log_name.c_str(), 0x500000)) return 1;
    Mox::TLogRecorder* const before = Mox::GetLogger()->recorder;
    Mox::SetLogRecorder(&recorder);
    double smallest = 0;
    int status = 0;
    for (int i = 2; i < argc; ++i) {
        const int count = std::atoi(argv[i]);
        const std::filesystem::path root = folder / argv[i];
        WriteRoot(root, count);
        setenv("QV_HOST_ROOT", root.c_str(), 1);
        const double first = Query(folder, "first.xml", count);
        const double second = Query(folder, "second.xml", count);
        std::filesystem::remove_all(root);
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        std::printf("%7d printers: %7.1f us per printer, the first time %7.1f us; memory %ld MiB\n",
                    count, second * 1e6 / count, first * 1e6 / count, usage.ru_maxrss / 1024);
        std::fflush(stdout);
        if (first < 0 || second < 0) {
            std::puts("FAILED: the answer is not whole");
            status = 1;
        }
        const double per_printer = first / count;
        if (smallest == 0) smallest = per_printer;
        if (per_printer > kMostGrowth * smallest) {
            std::puts("FAILED: the cost per printer grows");
            status = 1;
        }
    }
    Mox::SetLogRecorder(before);
    return status;
}
