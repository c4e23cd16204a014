// Settings to look at, wherever they are: a printer's, a block in a file, or the text form in a
// file.
#pragma once

#include <algorithm>

#include "base/json_output.h"
#include "settings/printer_settings.h"
#include "settings/settings_text.h"

namespace qv {

struct SettingsSource {
    enum class Kind { kPrinter, kBlock, kText };

    Kind kind;
    std::string name;
    SettingsBlock block;                  // of a text: the defaults, changed as it says
    std::vector<Assignment> assignments;  // of a text
    std::vector<LineFault> faults;        // of a text
    std::vector<std::string> damage;      // what is damaged; the rest can be looked at
    bool is_foreign = false;              // a whole block of another driver

    bool Has(const Field& field) const;
    int LineOf(const Field& field) const;
    // {"printer": ...} or {"file": ...}
    Json Description() const;
};

// A file that exists, `-` for standard input, or a printer. Throws Failure.
SettingsSource OpenSource(const std::string& name);

// The user's settings of the printer. Throws Failure.
SettingsSource SourceOfPrinter(const Printer& printer);

}  // namespace qv
