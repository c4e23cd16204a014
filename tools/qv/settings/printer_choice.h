// The printers that a command works on: one by name, the matches of a pattern, a list, or all.
#pragma once

#include "settings/printer_settings.h"

namespace CLI {
class App;
}

namespace qv {

struct PrinterChoice {
    std::string name;
    std::vector<std::string> patterns;
    std::string names_file;  // a name on each line
    bool all = false;
    bool force = false;

    bool IsMany() const { return all || !patterns.empty() || !names_file.empty(); }
};

// --all, --match, --names.
void AddChoiceOptions(CLI::App& command, PrinterChoice& choice);
// --force, of commands that change settings.
void AddForceOption(CLI::App& command, PrinterChoice& choice);

// For commands that take [PRINTER] WORD...: removes the first word, which names the printer, unless
// an option chooses printers. Throws a usage error when the printer is missing.
void TakePrinter(PrinterChoice& choice, std::vector<std::string>& words);

enum class Purpose { kLook, kChange };

// The chosen printers in the spooler's order; those of a list in the order of the list. --all and
// --match leave out printers of another driver, and say so when printers are to be changed. A
// command that changes settings refuses such a printer when it is named. `force` accepts them all.
// Throws Failure when no printer has a given name, or none is left.
std::vector<Printer> ChoosePrinters(const PrinterChoice& choice, Purpose purpose);

// `*` stands for any characters, `?` for one; letters in either case.
bool Matches(const UnicodeString& name, const UnicodeString& pattern);

}  // namespace qv
