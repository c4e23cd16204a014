// Settings to read: of a printer, of a block in a file, or of the text form in a file.
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
    SettingsBlock block;                  // for a text: the defaults with its assignments
    std::vector<Assignment> assignments;  // for a text
    std::vector<LineFault> faults;        // for a text
    std::vector<std::string> damage;      // the damaged parts; the rest can be read
    bool is_foreign = false;              // a complete block of another driver

    bool Has(const Field& field) const;
    int LineOf(const Field& field) const;
    // {"printer": ...} or {"file": ...}
    Json Description() const;
};

// Opens a file that exists, standard input for `-`, or else a printer. Throws Failure.
SettingsSource OpenSource(const std::string& name);

// The user's settings of the printer. Throws Failure.
SettingsSource SourceOfPrinter(const Printer& printer);

}  // namespace qv
