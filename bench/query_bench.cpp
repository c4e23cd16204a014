// The XML request call, file to file: a query for printers with all their settings, and its parts.
#include <time.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "driver_devmode/qvdm.h"
#include "log_file/log_recorder.h"
#include "mox_classes/containers/memory_stream.h"
#include "mox_log/logger.h"
#include "printer_query/spooler.h"
#include "qv_rtl_main/xml_request.h"
#include "support.h"
#include "xml/xml_doc.h"

namespace {

constexpr const char* kRequest =
    "<?xml version=\"1.0\"?>\r\n"
    "<query linebreak=\"&#13;&#10;\" indentation=\"  \"><printer/></query>\r\n";

std::string HexOf(const QV_DEVMODE& block) {
    std::string text = "hex:";
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&block);
    for (int i = 0; i < QV_DEVMODE::Size(); ++i) {
        constexpr char kDigits[] = "0123456789abcdef";
        if (i > 0) text += i % 32 == 0 ? ",\\\n  " : ",";
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

// A machine of so many printers, each with the current user's settings; the process's host root
// while it lives. Every step logs into a file there.
class Machine {
  public:
    explicit Machine(int printers)
        : root_(bench::HostRoot() + "/machine" + std::to_string(printers)) {
        const std::string registry = root_ + "/registry/";
        if (!std::filesystem::exists(registry)) {
            std::filesystem::create_directories(registry);
            WriteMachine(registry + "HKEY_LOCAL_MACHINE.reg", printers);
            WriteUser(registry + "HKEY_CURRENT_USER.reg", printers);
            std::ofstream(root_ + "/request.xml") << kRequest;
        }
        setenv("QV_HOST_ROOT", root_.c_str(), 1);
        recorder_before_ = Mox::GetLogger()->recorder;
        recorder_.Open(bench::Wide(root_ + "/query.log"), 0x500000);
        Mox::SetLogRecorder(&recorder_);
    }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    ~Machine() {
        Mox::SetLogRecorder(recorder_before_);
        setenv("QV_HOST_ROOT", bench::HostRoot().c_str(), 1);
    }
    UnicodeString File(const char* name) const { return bench::Wide(root_ + "/" + name); }

  private:
    static std::string Name(int printer) { return "Vantrel Fax " + std::to_string(1000 + printer); }

    static void WriteMachine(const std::string& file, int printers) {
        std::ofstream out(file);
        out << "Windows Registry Editor Version 5.00\n";
        for (int i = 0; i < printers; ++i) {
            out << "\n[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\"
                << Name(i) << "]\n\"Name\"=\"" << Name(i) << "\"\n\"Port\"=\"VFAX" << i
                << ":\"\n\"Printer Driver\"=\"Vantrel Driver\"\n\"Attributes\"=dword:00000040\n";
        }
    }
    static void WriteUser(const std::string& file, int printers) {
        TQVDM settings;
        settings.Directory = TEXT("C:\\Users\\anna\\Documents");
        settings.FileName = TEXT("C:\\Users\\anna\\Documents\\fax.tif");
        settings.Encode();
        const std::string block = HexOf(*settings.GetDM());
        std::ofstream out(file);
        out << "Windows Registry Editor Version "
               "5.00\n\n[HKEY_CURRENT_USER\\Printers\\DevModePerUser]\n";
        for (int i = 0; i < printers; ++i) out << '"' << Name(i) << "\"=" << block << '\n';
    }

    std::string root_;
    Mox::TLogRecorder recorder_;
    Mox::TLogRecorder* recorder_before_;
};

// Microseconds per printer.
void PerPrinter(benchmark::State& state, int printers) {
    using benchmark::Counter;
    state.counters["printer_us"] =
        Counter(printers * 1e-6, Counter::kIsIterationInvariantRate | Counter::kInvert);
}

double CpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

bool Ask(const Machine& machine) {
    const UnicodeString response = machine.File("response.xml");
    return DoXMLW(machine.File("request.xml").t_str(), response.t_str()) == 1;
}

// The time of a query that finds no printer: two files and their locks.
double SecondsWithoutPrinters() {
    constexpr int kTimes = 30;
    const Machine machine(0);
    Ask(machine);
    const double began = CpuSeconds();
    for (int i = 0; i < kTimes; ++i) Ask(machine);
    return (CpuSeconds() - began) / kTimes;
}

// The counter further_us is the time per printer without the time of a query that finds none.
template <int kPrinters>
void Query(benchmark::State& state) {
    const double without = SecondsWithoutPrinters();
    const Machine machine(kPrinters);
    Ask(machine);
    const double began = CpuSeconds();
    for (auto _ : state) {
        if (!Ask(machine)) state.SkipWithError("not answered");
    }
    const double seconds = (CpuSeconds() - began) / static_cast<double>(state.iterations());
    TXmlDoc answer;
    answer.LoadFromFile(machine.File("response.xml"));
    if (answer.FRoot->ChildCount() != kPrinters) state.SkipWithError("printers are missing");
    PerPrinter(state, kPrinters);
    state.counters["further_us"] = (seconds - without) / kPrinters * 1e6;
}

// The parts of the query of 200 printers.
constexpr int kPrinters = 200;

void ParseRequest(benchmark::State& state) {
    const Machine machine(kPrinters);
    const UnicodeString request = machine.File("request.xml");
    for (auto _ : state) {
        TXmlDoc document;
        document.LoadFromFile(request);
    }
    PerPrinter(state, kPrinters);
}

void AskSpooler(benchmark::State& state) {
    const Machine machine(kPrinters);
    for (auto _ : state) {
        const TW32StructData<PRINTER_INFO_2W> printers = GetInstalledPrintersInfo2();
        for (int i = 0; i < printers.Count(); ++i) {
            if (GetGlobalDevMode(printers[i].pPrinterName).IsEmpty()) {
                state.SkipWithError("no settings");
            }
        }
    }
    PerPrinter(state, kPrinters);
}

void LogLines(benchmark::State& state) {
    const Machine machine(kPrinters);
    for (auto _ : state) {
        for (int i = 0; i < kPrinters; ++i) {
            Mox::GetLogger()->Log(' ', TEXT("printer_query"), 1,
                                  TEXT("[GetGlobalDevMode(x1234)] Using level 9"), UnicodeString(),
                                  nullptr, 0);
        }
    }
    PerPrinter(state, kPrinters);
}

void WriteSettings(benchmark::State& state) {
    const Machine machine(kPrinters);
    TQVDM settings;
    for (auto _ : state) {
        TXmlNode response;
        for (int i = 0; i < kPrinters; ++i) {
            TQVDM wrapper(settings.GetDM());
            wrapper.ToXmlNode(response.AddChild(TEXT("printer"))->AddChild(TEXT("devmode")));
        }
    }
    PerPrinter(state, kPrinters);
}

void WriteResponse(benchmark::State& state) {
    const Machine machine(kPrinters);
    TXmlDoc request;
    request.LoadFromFile(machine.File("request.xml"));
    TXmlDoc response;
    DoXML(&request, &response);
    const UnicodeString file = machine.File("response.xml");
    for (auto _ : state) {
        Classes::TFileStream stream(file, Classes::TFileStream::kCreate);
        response.SaveToStream(&stream);
    }
    PerPrinter(state, kPrinters);
}

BENCHMARK(Query<200>)->Name("query/printers/ours");
BENCHMARK(ParseRequest)->Name("query/parse/ours");
BENCHMARK(AskSpooler)->Name("query/spooler/ours");
BENCHMARK(LogLines)->Name("query/log/ours");
BENCHMARK(WriteSettings)->Name("query/settings/ours");
BENCHMARK(WriteResponse)->Name("query/write/ours");
BENCHMARK(Query<20>)->Name("query/growth_200/of_20");
BENCHMARK(Query<200>)->Name("query/growth_200/ours");
BENCHMARK(Query<2000>)->Name("query/growth_2000/ours");
BENCHMARK(Query<20>)->Name("query/growth_2000/of_20");

}  // namespace
