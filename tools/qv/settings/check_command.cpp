// qv check: finds the printers that do not have the settings of a profile.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "settings/changes.h"
#include "settings/field_json.h"
#include "settings/printer_look.h"
#include "settings/profile.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

struct CheckOptions {
    std::string profile;
    PrinterChoice choice;
    bool json = false;
};

Json DeviationJson(const PrinterChange& change) {
    Json fields = Json::array();
    for (const FieldChange& f : change.fields) {
        if (!f.IsChange()) continue;
        fields.push_back({{"name", NameOf(*f.field)},
                          {"is", FieldJson(*f.field, f.before)},
                          {"wanted", FieldJson(*f.field, f.after)}});
    }
    Json object = {{"printer", Text(change.printer)},
                   {"conforms", change.failure.empty() && !change.IsToStore()},
                   {"fields", fields}};
    if (!change.note.empty()) object["note"] = change.note;
    if (!change.failure.empty()) object["error"] = change.failure;
    return object;
}

std::string DeviationLines(const PrinterChange& change) {
    const std::string printer = OneLine(change.printer) + ": ";
    std::string lines;
    if (change.must_store) lines += printer + "no settings of the user's own\n";
    for (const FieldChange& f : change.fields) {
        if (!f.IsChange()) continue;
        lines += printer + NameOf(*f.field) + " is " + Shown(f.before) + ", wanted " +
                 Shown(f.after) + "\n";
    }
    return lines;
}

// Collects the findings; they are printed after the last printer.
struct Deviations {
    Json list = Json::array();
    std::string lines;
    std::vector<std::string> errors;
    std::size_t count = 0, differ = 0;

    void Take(const PrinterChange& change) {
        ++count;
        list.push_back(DeviationJson(change));
        if (!change.failure.empty()) {
            errors.push_back(OneLine(change.printer) + ": " + change.failure);
        } else {
            lines += DeviationLines(change);
        }
        differ += change.IsToStore() || !change.failure.empty() ? 1 : 0;
    }
};

// A printer conforms when `qv apply` would change nothing.
void Check(const CheckOptions& options) {
    if (options.choice.IsMany() != options.choice.name.empty())
        throw CLI::ValidationError("PRINTER", "either it or --all, --match or --names");
    const SettingsText profile = ReadProfile(options.profile);
    Deviations found;
    EachPrinter(options.choice, [&](const Printer& printer) {
        found.Take(PlanChange(printer, ForPrinter(profile, printer), false));
    });
    if (options.json) {
        PrintJson({{"scope", kScope}, {"conforms", found.differ == 0}, {"printers", found.list}});
    } else {
        PrintScope();
        Print(found.lines);
        for (const std::string& error : found.errors) PrintError(error);
        if (options.choice.IsMany()) {
            PrintError(std::to_string(found.differ) + " of " + Counted(found.count, "printer") +
                       " not as wanted");
        }
    }
    if (found.differ != 0) throw Failure("");
}

}  // namespace

void AddCheckCommand(CLI::App& app) {
    auto options = std::make_shared<CheckOptions>();
    CLI::App* command = app.add_subcommand(
        "check", "Name the printers without the settings of a file; the exit code is then 1");
    command
        ->add_option("PROFILE", options->profile,
                     "A file of `qv export`, or a part of it; - is standard input")
        ->required()
        ->type_name("FILE");
    command->add_option("PRINTER", options->choice.name, "One printer by its name");
    AddChoiceOptions(*command, options->choice);
    command->add_flag("--json", options->json, "One JSON document");
    command->callback([options] { Check(*options); });
}

}  // namespace qv
