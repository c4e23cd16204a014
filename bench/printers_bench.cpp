// Commands of the tool on machines of many printers.
#include <filesystem>
#include <fstream>

#include "support.h"
#include "tool_run.h"

namespace {

using bench::Tool;
using bench::Words;

// A machine of `count` printers of the product, as a `.reg` file.
std::string Machine(int count) {
    const std::string name = bench::NewFileName();
    std::ofstream file(name);
    file << std::ifstream(QV_SAMPLES "/machine.reg").rdbuf();
    for (int i = 0; i < count; ++i) {
        const std::string printer = "Fax " + std::to_string(i);
        file << "\n[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\"
             << printer << "]\n\"Name\"=\"" << printer
             << "\"\n\"Printer Driver\"=\"Vantrel Driver\"\n\"Port\"=\"VFAX1:\"\n"
                "\"Print Processor\"=\"winprint\"\n\"Datatype\"=\"RAW\"\n";
    }
    return name;
}

// Every printer has settings of its own before the first case.
Tool MakeTool(const std::string& program, const std::string& name, int count) {
    Tool tool(program, bench::HostRoot() + "/" + name, Machine(count));
    tool.Seconds({"set", "--all", "dmCopies=99"});
    return tool;
}

template <int kCount>
const Tool& Ours() {
    static const Tool tool =
        MakeTool(bench::ToolNow(), "printers_" + std::to_string(kCount), kCount);
    return tool;
}

template <int kCount>
const Tool& Before() {
    static const Tool tool =
        MakeTool(bench::ToolBefore(), "printers_before_" + std::to_string(kCount), kCount);
    return tool;
}

// Another value each time, so that there is something to change.
std::string Copies() {
    static int number = 0;
    number = number % 90 + 1;
    return "dmCopies=" + std::to_string(number);
}

Words SetAll() {
    return {"set", "--all", Copies()};
}
Words SetOne() {
    return {"set", "Fax 7", Copies()};
}
Words Get() {
    return {"get", "Fax 7"};
}
Words QueryAll() {
    return {"xml", QV_SAMPLES "/requests/query-all.xml", "/dev/null"};
}

const bool kAdded = [] {
    using bench::AddToolCase;
    AddToolCase("printers/set_all/ours", Ours<2000>, SetAll);
    AddToolCase("printers/set_all/of_200", Ours<200>, SetAll);
    AddToolCase("printers/set_one/ours", Ours<2000>, SetOne);
    AddToolCase("printers/set_one/of_20", Ours<20>, SetOne);
    AddToolCase("printers/get/ours", Ours<2000>, Get);
    AddToolCase("printers/get/of_20", Ours<20>, Get);
    AddToolCase("printers/query/ours", Ours<200>, QueryAll);
    if (bench::ToolBefore().empty()) return true;
    AddToolCase("printers/query/before", Before<200>, QueryAll);
    AddToolCase("printers/set_all_200/ours", Ours<200>, SetAll);
    AddToolCase("printers/set_all_200/before", Before<200>, SetAll);
    return true;
}();

}  // namespace
