// qv: the library's two command interfaces, its printers' settings and its log on the command line.
//
// Exit codes: 0 done, 1 the operation failed (the message is on standard error), 2 wrong usage.
#include <algorithm>
#include <exception>
#include <string>
#include <vector>

#include "commands.h"
#include "console.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

void AddCommands(CLI::App& app) {
    app.require_subcommand(1);
    app.set_version_flag("--version", "qv " QV_VERSION);
    app.set_help_all_flag("--help-all", "Show the help of every command");
    qv::AddXmlCommand(app);
    qv::AddTextCommand(app);
    qv::AddPrinterCommands(app);
    qv::AddCatalogueCommands(app);
    qv::AddBlockCommands(app);
    qv::AddLogCommands(app);
    qv::AddEventCommands(app);
    qv::AddHostCommands(app);
}

int Run(std::vector<std::string> arguments) {
    CLI::App app("Settings, requests and the shared log of the fax printer", "qv");
    AddCommands(app);
    // The parser takes the arguments from the end of the vector, without the program's name.
    arguments.erase(arguments.begin());
    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kWrongUsage;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(qv::PrepareConsole(argc, argv));
    } catch (const std::exception& failure) {
        qv::PrintError(failure.what());
    } catch (const UnicodeString& message) {
        qv::PrintError(qv::OneLine(message));
    }
    return kFailed;
}
