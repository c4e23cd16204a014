#include "settings/printer_choice.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "base/files.h"
#include "base/value_text.h"

namespace qv {

namespace {

bool IsSameLetter(WCHAR a, WCHAR b) {
    return a == b || UnicodeString(a).CompareIC(UnicodeString(b)) == 0;
}

bool MatchesOne(const UnicodeString& name, const std::vector<std::string>& patterns) {
    return std::ranges::any_of(
        patterns, [&name](const std::string& pattern) { return Matches(name, FromUtf8(pattern)); });
}

void RefuseForeign(const Printer& printer, const PrinterChoice& choice, Purpose purpose) {
    if (purpose == Purpose::kLook || printer.IsProduct() || choice.force) return;
    throw Failure(Quoted(printer.name) + " has the driver " + Quoted(printer.driver) +
                  ", which is not the product's; --force changes its public fields");
}

// Prints one message for all of them.
void SayLeftOut(const std::vector<Printer>& printers) {
    if (printers.empty()) return;
    const Printer& first = printers.front();
    const std::string rest = Counted(printers.size() - 1, "more printer");
    PrintError("left out: " + Quoted(first.name) + " has the driver " + Quoted(first.driver) +
               (printers.size() == 1 ? "" : ", and " + rest + " of other drivers"));
}

std::vector<Printer> ChooseByPattern(const PrinterChoice& choice, Purpose purpose) {
    std::vector<Printer> chosen, left_out;
    for (Printer& printer : InstalledPrinters()) {
        if (!choice.all && !MatchesOne(printer.name, choice.patterns)) continue;
        const bool is_taken = printer.IsProduct() || choice.force;
        (is_taken ? chosen : left_out).push_back(std::move(printer));
    }
    if (purpose == Purpose::kChange || chosen.empty()) SayLeftOut(left_out);
    return chosen;
}

std::vector<UnicodeString> ReadNames(const std::string& file) {
    std::vector<UnicodeString> names;
    std::istringstream lines(ReadAll(file));
    for (std::string line; std::getline(lines, line);)
        if (!Trimmed(line).empty()) names.push_back(FromUtf8(Trimmed(line)));
    return names;
}

// Returns each printer once. Reports all unknown names in one message.
std::vector<Printer> ChooseByList(const PrinterChoice& choice, Purpose purpose) {
    std::map<std::string, Printer> installed;
    for (Printer& printer : InstalledPrinters())
        installed.try_emplace(ToUtf8(printer.name.LowerCase()), std::move(printer));
    std::vector<Printer> chosen;
    std::set<std::string> taken;
    std::string faults;
    for (const UnicodeString& name : ReadNames(choice.names_file)) {
        const std::string key = ToUtf8(name.LowerCase());
        const auto found = installed.find(key);
        if (found == installed.end()) {
            faults += (faults.empty() ? "no printer " : "\nqv: no printer ") + Quoted(name);
        } else if (taken.insert(key).second) {
            RefuseForeign(found->second, choice, purpose);
            chosen.push_back(found->second);
        }
    }
    if (!faults.empty()) throw Failure(faults);
    return chosen;
}

}  // namespace

void AddChoiceOptions(CLI::App& command, PrinterChoice& choice) {
    CLI::Option* all = command.add_flag("--all", choice.all, "Every printer of the product");
    CLI::Option* match = command
                             .add_option("--match", choice.patterns,
                                         "Every printer of the product whose name fits: * and ?; "
                                         "upper and lower case are the same")
                             ->type_name("PATTERN")
                             ->allow_extra_args(false);
    command
        .add_option("--names", choice.names_file,
                    "The printers that the file names, one on each line; - is standard input")
        ->type_name("FILE")
        ->excludes(all)
        ->excludes(match);
}

void AddForceOption(CLI::App& command, PrinterChoice& choice) {
    command.add_flag("--force", choice.force,
                     "Also printers of another driver, and printers with damaged settings");
}

void TakePrinter(PrinterChoice& choice, std::vector<std::string>& words) {
    if (choice.IsMany()) return;
    if (words.empty()) throw CLI::RequiredError("PRINTER, --all, --match or --names");
    choice.name = words.front();
    words.erase(words.begin());
}

std::vector<Printer> ChoosePrinters(const PrinterChoice& choice, Purpose purpose) {
    std::vector<Printer> chosen;
    if (!choice.names_file.empty()) {
        chosen = ChooseByList(choice, purpose);
    } else if (choice.IsMany()) {
        chosen = ChooseByPattern(choice, purpose);
    } else {
        chosen.push_back(FindPrinter(FromUtf8(choice.name)));
        RefuseForeign(chosen.front(), choice, purpose);
    }
    if (chosen.empty()) throw Failure("no printer to work on");
    return chosen;
}

bool Matches(const UnicodeString& name, const UnicodeString& pattern) {
    const WCHAR* n = name.t_str();
    const WCHAR* p = pattern.t_str();
    // Where to try again when the text behind the last star does not match.
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
