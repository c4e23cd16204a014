// qv export: writes a printer's settings as text.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string_view>

#include "base/files.h"
#include "os_xp/user_name.h"
#include "settings/printer_look.h"
#include "settings/settings_commands.h"
#include "settings/settings_text.h"

namespace qv {

namespace {

struct ExportOptions {
    PrinterChoice choice;
    std::vector<std::string> words;
    Output output;  // of one printer the file, of many the folder
};

std::string FormatLook(const PrinterLook& look) {
    const SettingsHead head = {look.printer.name, look.printer.driver, ::GetUserNameW(true)};
    return FormatSettings(head, *look.block);
}

// The printer's name as a file name that every host accepts. Other characters become %XX.
std::string FileNameOf(const Printer& printer) {
    std::string name;
    for (const char c : ToUtf8(printer.name)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F &&
            std::string_view("\\/:*?\"<>|%").find(c) == std::string::npos) {
            name += c;
            continue;
        }
        char escaped[4];
        std::snprintf(escaped, sizeof(escaped), "%%%02X", unsigned{byte});
        name += escaped;
    }
    return name + ".txt";
}

void TakeTarget(ExportOptions& options) {
    TakePrinter(options.choice, options.words);
    const bool is_many = options.choice.IsMany();
    if (options.words.size() > 1 || (is_many && options.words.empty()))
        throw CLI::ValidationError(is_many ? "FOLDER" : "FILE", "one is needed");
    options.output.name = options.words.empty() ? kStandardStream : options.words.front();
}

void Export(ExportOptions& options) {
    TakeTarget(options);
    const bool is_many = options.choice.IsMany();
    LookFaults faults;
    std::vector<std::pair<Output, std::string>> files;
    LookAtPrinters(options.choice, [&](const PrinterLook& look) {
        faults.Add(look, is_many);
        if (!look.block) return;
        Output file = options.output;
        if (is_many) file.name += "/" + FileNameOf(look.printer);
        RefuseExisting(file);
        files.emplace_back(std::move(file), FormatLook(look));
    });
    // None is written when one is refused.
    for (const auto& [file, text] : files) WriteOutput(file, text);
    PrintScope();
    faults.Report();
}

}  // namespace

void AddExportCommand(CLI::App& app) {
    auto options = std::make_shared<ExportOptions>();
    CLI::App* command = app.add_subcommand(
        "export", "Write the current user's settings of one printer or of many as text");
    command->footer(
        "One printer: qv export PRINTER [FILE]; - is standard output, the default.\n"
        "Many: qv export --all FOLDER, which exists; each printer gets a file of its name.");
    command->add_option("FILE", options->words, "The printer and the file, or the folder for many")
        ->type_name("[PRINTER] [FILE|FOLDER]");
    AddChoiceOptions(*command, options->choice);
    AddForceOption(*command, options->output);
    command->callback([options] { Export(*options); });
}

}  // namespace qv
