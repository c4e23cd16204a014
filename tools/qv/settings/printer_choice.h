// Which printers a command works on: one by name, those of a pattern or a list, or all.
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

// Of the words of a command that takes [PRINTER] WORD...: the first names the printer when nothing
// else chooses printers. Throws a usage error when it is missing.
void TakePrinter(PrinterChoice& choice, std::vector<std::string>& words);

enum class Purpose { kLook, kChange };

// The printers chosen, in the spooler's order, those of a list in its order. Printers of a foreign
// driver are left out by --all and --match, with a message when printers are to be changed; one
// that is named and is to be changed is refused. With `force` they are taken. Throws Failure when a
// name is no printer's, or none is left.
std::vector<Printer> ChoosePrinters(const PrinterChoice& choice, Purpose purpose);

// `*` stands for any characters, `?` for one; letters in either case.
bool Matches(const UnicodeString& name, const UnicodeString& pattern);

}  // namespace qv
