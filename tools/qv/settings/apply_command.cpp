// qv apply: sets the settings of a profile on one printer or on many.
#include <CLI/CLI.hpp>
#include <memory>

#include "settings/change_run.h"
#include "settings/printer_choice.h"
#include "settings/profile.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

struct ApplyOptions {
    std::string file;
    PrinterChoice choice;
    RunOptions run;
};

void Run(ApplyOptions& options) {
    if (options.choice.IsMany() && !options.choice.name.empty())
        throw CLI::ValidationError("PRINTER", "excludes --all, --match and --names");
    const SettingsText text = ReadProfile(options.file);
    if (options.choice.name.empty()) options.choice.name = ToUtf8(text.printer);
    if (!options.choice.IsMany() && options.choice.name.empty())
        throw Failure("the file names no printer: give one, --match, --names or --all");
    options.run.report.only_changes = true;
    const auto assignments = [&text](const Printer& p) { return ForPrinter(text, p); };
    RunChanges(options.choice, assignments, options.run);
}

}  // namespace

void AddApplyCommand(CLI::App& app) {
    auto options = std::make_shared<ApplyOptions>();
    CLI::App* command =
        app.add_subcommand("apply", "Set the values of a file of `qv export`, all lines or none");
    command->add_option("FILE", options->file, "The text; - is standard input")->required();
    command->add_option("PRINTER", options->choice.name,
                        "The printer's name; the default is the one in the file");
    AddChoiceOptions(*command, options->choice);
    AddForceOption(*command, options->choice);
    AddRunOptions(*command, options->run);
    command->callback([options] { Run(*options); });
}

}  // namespace qv
