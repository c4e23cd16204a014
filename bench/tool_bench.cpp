// What people wait for when they start the tool.
#include <fstream>

#include "log_file/log_format.h"
#include "log_file/log_image.h"
#include "log_file/log_record.h"
#include "support.h"
#include "tool_run.h"

namespace {

using bench::Tool;
using bench::Words;

constexpr const char* kMachine = QV_SAMPLES "/machine.reg";
constexpr std::size_t kFull = 0x500000;  // what start-up passes

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

// A record as the product's own modules write them; one of twenty tells a failure. The lines of a
// command come together, the commands seconds apart.
void Fill(Mox::TLogMsg& message, int number) {
    constexpr std::uint64_t kSecond = 10'000'000;
    const bool fails = number % 20 == 0;
    const std::string printer = "'Printer " + std::to_string(number) + "'";
    const std::uint64_t time =
        134'000'000'000'000'000 + number / 5 * 3 * kSecond + number % 5 * 9000;
    message.time = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    message.level = fails ? 'X' : 'i';
    message.processId = message.threadId = static_cast<DWORD>(4000 + number / 50);
    message.sessionId = 1;
    message.source = TEXT("printer_query");
    message.line = fails ? 57 : 118;
    message.text =
        bench::Wide(fails ? "[GetGlobalDevMode(" + printer +
                                ")] OpenPrinter failed: [1801]The printer name is invalid."
                          : "SetPrinter(" + printer + ") called successfully, level 9");
}

const std::string& FullLog() {
    static const std::string name = [] {
        Mox::TLogImage image;
        Mox::TLogMsg message;
        std::size_t size = 0;
        for (int i = 0; size < kFull; ++i) {
            Fill(message, i);
            size += Mox::WriteLogMsg(nullptr, &message) + Mox::kLinkSize;
            image.Append(message);
        }
        std::string file = bench::NewFileName();
        const std::vector<std::uint8_t>& bytes = image.Finish(kFull);
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
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
