// What people wait for when they start the tool.
#include "full_log.h"
#include "support.h"
#include "tool_run.h"

namespace {

using bench::Tool;
using bench::Words;

constexpr const char* kMachine = QV_SAMPLES "/machine.reg";

const Tool& Ours() {
    static const Tool tool(bench::ToolNow(), bench::HostRoot() + "/tool", kMachine);
    return tool;
}

const Tool& Before() {
    static const Tool tool(bench::ToolBefore(), bench::HostRoot() + "/tool_before", kMachine);
    return tool;
}

// A program that only says one line.
const Tool& SmallProgram() {
    static const Tool tool(bench::Folder() + "/small_program", bench::HostRoot(), "");
    return tool;
}

const std::string& FullLog() {
    static const std::string name = [] {
        std::string file = bench::NewFileName();
        bench::WriteFullLog(file);
        return file;
    }();
    return name;
}

Words Version() {
    return {"--version"};
}
Words Get() {
    return {"get", "Vantrel Fax"};
}
Words Show() {
    return {"log", "show", FullLog()};
}
Words Grep() {
    return {"log", "show", FullLog(), "--grep", "rinter .*(failed|refused): \\[[0-9]+\\]"};
}

const bool kAdded = [] {
    const bool has_before = !bench::ToolBefore().empty();
    const auto add = [has_before](const std::string& row, Words (*words)()) {
        bench::AddToolCase("tool/" + row + "/ours", Ours, words);
        if (has_before) bench::AddToolCase("tool/" + row + "/before", Before, words);
    };
    add("version", Version);
    bench::AddToolCase("tool/version/small_program", SmallProgram, Version);
    add("get", Get);
    bench::AddToolCase("tool/get/version", Ours, Version);
    add("show", Show);
    add("grep", Grep);
    bench::AddToolCase("tool/grep/show", Ours, Show);
    return true;
}();

}  // namespace
