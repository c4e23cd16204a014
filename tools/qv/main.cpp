// qv: the library's two command interfaces, its printers' settings and its log on the command line.
//
// Exit codes: exit_code.h. Data goes to standard output, messages to standard error.
#include <algorithm>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "base/commands.h"
#include "base/console.h"
#include "base/host.h"
#include "base/usage_error.h"
#include "qv_rtl_version.h"

namespace {

using qv::ExitCode;

constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0  done\n"
    "  1  the operation failed, or compared things differ\n"
    "  2  wrong usage\n"
    "  3  the input was damaged; the sound part was handled\n"
    "  4  a file or stream cannot be opened";

void AddCommands(CLI::App& app) {
    app.require_subcommand(1);
    app.set_version_flag("--version", "qv " QV_RTL_VERSION_TEXT);
    app.set_help_all_flag("--help-all", "Show this help and the help of all subcommands");
    qv::AddXmlCommand(app);
    qv::AddTextCommand(app);
    qv::AddPrinterCommands(app);
    qv::AddCatalogueCommands(app);
    qv::AddBlockCommands(app);
    qv::AddLogCommands(app);
    qv::AddEventCommands(app);
    qv::AddDoctorCommands(app);
    qv::AddReportCommands(app);
    qv::AddHostCommands(app);
    qv::AddCompletionCommands(app);
    app.footer(kExitCodes);
}

// The parser passes words behind "--" to the command only while required words are missing. So the
// "--" is dropped when no word behind it looks like an option. `qv command` takes all words as they
// are.
void DropNeedlessMark(std::vector<std::string>& arguments) {
    const auto is_option = [](const std::string& word) { return word.starts_with('-'); };
    const auto verb = std::find_if_not(arguments.begin(), arguments.end(), is_option);
    const auto mark = std::find(arguments.begin(), arguments.end(), "--");
    if (mark == arguments.end() || verb == arguments.end() || *verb == "command") return;
    if (std::none_of(mark + 1, arguments.end(), is_option)) arguments.erase(mark);
}

ExitCode Run(std::vector<std::string> arguments) {
    CLI::App app("Settings, requests and the shared log of the fax printer", "qv");
    AddCommands(app);
    // The parser takes the arguments from the end of the vector, without the program's name.
    arguments.erase(arguments.begin());
    DropNeedlessMark(arguments);
    app.failure_message([&app, words = arguments](const CLI::App*, const CLI::Error& error) {
        const UnicodeString text = qv::FromUtf8(qv::UsageError(app, error, words));
        return "qv: " + qv::Lines(text) + "\nqv: --help shows the usage\n";
    });
    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        std::ostringstream help;
        const int code = app.exit(error, help, std::cerr);
        qv::Print(help.str());
        return code == 0 ? ExitCode::kDone : ExitCode::kWrongUsage;
    }
    return ExitCode::kDone;
}

ExitCode RunAndReport(int argc, char** argv) {
    try {
        return Run(qv::PrepareConsole(argc, argv));
    } catch (const qv::ClosedPipe&) {
        return ExitCode::kDone;
    } catch (const qv::Failure& failure) {
        if (*failure.what() != 0) qv::PrintError(failure.what());
        const std::string problem = qv::HostProblem();
        if (!problem.empty() && problem != failure.what()) qv::PrintError(problem);
        return failure.Code();
    } catch (const std::exception& failure) {
        qv::PrintError(failure.what());
    } catch (const UnicodeString& message) {
        qv::PrintError(qv::OneLine(message));
    }
    return ExitCode::kFailed;
}

}  // namespace

int main(int argc, char** argv) {
    return static_cast<int>(RunAndReport(argc, argv));
}
