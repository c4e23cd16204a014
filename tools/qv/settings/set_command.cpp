// qv set: changes the current user's settings by name.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "settings/change_run.h"
#include "settings/field_value.h"
#include "settings/printer_choice.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

struct SetOptions {
    PrinterChoice choice;
    RunOptions run;
    std::vector<std::string> words;
};

struct Words {
    UnicodeString name, value;
};

Words Split(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == 0 || equals == std::string::npos)
        throw CLI::ValidationError("KEYWORD=VALUE", Quoted(text) + " is not of this form");
    return {FromUtf8(text.substr(0, equals)), FromUtf8(text.substr(equals + 1))};
}

std::string FaultOf(const Words& word, const Field* field, const std::vector<Assignment>& earlier) {
    if (field == nullptr) return "no field has that name" + Hint(word.name);
    if (std::ranges::find(earlier, field, &Assignment::field) != earlier.end())
        return "it is given twice";
    return ValueFault(*field, word.value);
}

// Reports all errors in one message; then nothing is changed.
std::vector<Assignment> ParseAssignments(const std::vector<std::string>& texts) {
    std::vector<Words> words;
    words.reserve(texts.size());
    for (const std::string& text : texts) words.push_back(Split(text));
    std::vector<Assignment> assignments;
    std::string faults;
    for (const Words& word : words) {
        const Field* const field = FindField(word.name);
        const std::string reason = FaultOf(word, field, assignments);
        if (reason.empty()) {
            assignments.push_back({field, word.value});
        } else {
            faults += (faults.empty() ? "'" : "\nqv: '") + OneLine(word.name) +
                      "' cannot be set to '" + OneLine(word.value) + "': " + reason;
        }
    }
    if (!faults.empty()) throw Failure(faults);
    return assignments;
}

void Run(SetOptions& options) {
    TakePrinter(options.choice, options.words);
    if (options.words.empty())
        throw CLI::ValidationError("KEYWORD=VALUE", "nothing to set is given");
    const std::vector<Assignment> assignments = ParseAssignments(options.words);
    const auto same_for_all = [&assignments](const Printer&) { return assignments; };
    RunChanges(options.choice, same_for_all, options.run);
}

}  // namespace

void AddSetCommand(CLI::App& app) {
    auto options = std::make_shared<SetOptions>();
    CLI::App* set =
        app.add_subcommand("set", "Change the current user's settings of one printer or of many");
    set->footer(
        "The first word is the printer's name unless --all, --match or --names choose\n"
        "printers. Keywords are the names that `qv get` shows. Examples:\n"
        "  qv set \"Vantrel Fax\" dmCopies=2 exOut.UseSerial=False\n"
        "  qv set --match \"vantrel*\" --dry-run dmCopies=2");
    set->add_option("KEYWORD=VALUE", options->words, "The printer, and the new values")
        ->type_name("[PRINTER] KEYWORD=VALUE...")
        ->required();
    AddChoiceOptions(*set, options->choice);
    AddForceOption(*set, options->choice);
    AddRunOptions(*set, options->run);
    set->callback([options] { Run(*options); });
}

}  // namespace qv
