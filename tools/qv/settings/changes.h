// Changes of printers' settings: worked out first, then stored printer by printer.
#pragma once

#include "settings/printer_settings.h"
#include "settings/settings_text.h"

namespace qv {

// What happens to one printer. With a failure nothing of it is stored.
struct PrinterChange {
    UnicodeString printer;
    std::vector<FieldChange> fields;  // those asked for, and what else changes with them
    std::string note;                 // for the user, beside the change
    std::string failure;
    std::optional<SettingsBlock> before, after;
    bool must_store = false;      // although no field changes: the user has no settings yet
    bool is_not_reached = false;  // the user stopped the command before it; a failure as well

    bool IsToStore() const;
};

// Never throws for what is wrong with the printer; that is the change's failure.
PrinterChange PlanChange(const Printer& printer, const std::vector<Assignment>& assignments,
                         bool force);

// Stores it. `fields` then say what the driver made of it; a failure is the change's own.
void StoreChange(PrinterChange& change);

// A value in a line of text: as in the text form, the empty text as "".
std::string Shown(const UnicodeString& value);

}  // namespace qv
