// qv command: makes the library's text command call.
#include <memory>
#include <string>
#include <vector>

#include "base/commands.h"
#include "base/console.h"
#include "qv_rtl_main/command_entry.h"
#include "settings/recorded_call.h"

namespace qv {

namespace {

// Items that hold the separator, or begin like a quoted item, are quoted.
std::string Item(const std::string& text) {
    if (text.find('\t') == std::string::npos && text.substr(0, 1) != "\"") return text;
    std::string quoted = "\"";
    for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + "\"";
}

// The settings that the command may change: setdevmode PrinterName NAME ...
CallTargets TargetsOf(const std::vector<std::string>& items) {
    const bool is_change = FromUtf8(items.front()).Trim().CompareIC(TEXT("setdevmode")) == 0;
    if (!is_change || items.size() < 3) return {};
    return {{FromUtf8(items[2])}, {}};
}

void CallTextCommand(const std::vector<std::string>& items) {
    std::string line;
    for (const std::string& item : items) line += (line.empty() ? "" : "\t") + Item(item);
    // The call cannot be repeated with more room, since it may change settings. A longer result is
    // cut.
    constexpr int kCapacity = 1 << 20;
    std::vector<WCHAR> buffer(kCapacity + 1);
    const int status = DoCommandW(FromUtf8(line).t_str(), buffer.data(), kCapacity);
    const std::string result = ToUtf8(UnicodeString(buffer.data()));
    if (status < 0)
        throw Failure(OneLine(UnicodeString(buffer.data()).Trim()) + " (status " +
                      std::to_string(status) + ")");
    if (!result.empty()) PrintLine(result);
}

}  // namespace

void AddTextCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand(
        "command", "Make a text command call: qv command WORD [KEYWORD VALUE]...");
    command->footer(
        "Words: getdevmode, setdevmode, getorloprinters. Example:\n"
        "  qv command setdevmode PrinterName \"Vantrel Fax\" Mode 1");
    // Values may look like options, so all words are taken as they are.
    command->prefix_command();
    auto record = std::make_shared<RecordOptions>();
    AddRecordOptions(*command, *record);
    command->callback([command, record] {
        const std::vector<std::string> items = command->remaining();
        if (items.empty()) throw CLI::RequiredError("WORD");
        RecordCall(TargetsOf(items), *record, [&items] { CallTextCommand(items); });
    });
}

}  // namespace qv
