// Which printers a command works on: one by name, those of a pattern, or all.
#pragma once

#include "settings/printer_settings.h"

namespace CLI {
class App;
}

namespace qv {

struct PrinterChoice {
    std::string name;
    std::vector<std::string> patterns;
    bool all = false;
    bool force = false;

    bool IsMany() const { return all || !patterns.empty(); }
};

// --all, --match, --force.
void AddChoiceOptions(CLI::App& command, PrinterChoice& choice);

// The printers chosen. Those of a foreign driver are left out with a message when they were not
// named, and refused when one was, unless they are forced. Throws Failure when none is left.
std::vector<Printer> ChoosePrinters(const PrinterChoice& choice);

// `*` stands for any characters, `?` for one; letters in either case.
bool Matches(const UnicodeString& name, const UnicodeString& pattern);

}  // namespace qv
