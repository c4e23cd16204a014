#include "settings/printer_choice.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace qv {

namespace {

bool IsSameLetter(WCHAR a, WCHAR b) {
    return a == b || UnicodeString(a).CompareIC(UnicodeString(b)) == 0;
}

bool MatchesOne(const UnicodeString& name, const std::vector<std::string>& patterns) {
    return std::ranges::any_of(
        patterns, [&name](const std::string& pattern) { return Matches(name, FromUtf8(pattern)); });
}

Printer ChooseByName(const PrinterChoice& choice) {
    Printer printer = FindPrinter(FromUtf8(choice.name));
    if (printer.IsProduct() || choice.force) return printer;
    throw Failure("'" + OneLine(printer.name) + "' has the driver '" + OneLine(printer.driver) +
                  "', which is not the product's; --force changes its public fields");
}

}  // namespace

void AddChoiceOptions(CLI::App& command, PrinterChoice& choice) {
    command.add_flag("--all", choice.all, "Every printer of the product");
    command
        .add_option("--match", choice.patterns,
                    "Every printer of the product whose name fits: * and ?, in either case")
        ->type_name("PATTERN")
        ->allow_extra_args(false);
    command.add_flag("--force", choice.force,
                     "Also printers of a foreign driver, and in place of damaged settings");
}

std::vector<Printer> ChoosePrinters(const PrinterChoice& choice) {
    if (!choice.IsMany()) return {ChooseByName(choice)};
    std::vector<Printer> chosen;
    for (Printer& printer : InstalledPrinters()) {
        if (!choice.all && !MatchesOne(printer.name, choice.patterns)) continue;
        if (printer.IsProduct() || choice.force) {
            chosen.push_back(std::move(printer));
        } else {
            PrintError("left out: '" + OneLine(printer.name) + "' has the driver '" +
                       OneLine(printer.driver) + "'");
        }
    }
    if (chosen.empty()) throw Failure("no printer to work on");
    return chosen;
}

bool Matches(const UnicodeString& name, const UnicodeString& pattern) {
    const WCHAR* n = name.t_str();
    const WCHAR* p = pattern.t_str();
    // Where to go on when what follows the last star does not fit.
    const WCHAR* star = nullptr;
    const WCHAR* star_end = nullptr;
    while (*n != 0) {
        if (*p == '*') {
            star = ++p;
            star_end = n;
        } else if (*p != 0 && (*p == '?' || IsSameLetter(*p, *n))) {
            ++p;
            ++n;
        } else if (star != nullptr) {
            p = star;
            n = ++star_end;
        } else {
            return false;
        }
    }
    while (*p == '*') ++p;
    return *p == 0;
}

}  // namespace qv
