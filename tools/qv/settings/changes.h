// The changes of one printer's settings: first planned, then stored.
#pragma once

#include "settings/printer_settings.h"
#include "settings/settings_text.h"

namespace qv {

// The planned changes of one printer. When `failure` has a text, nothing is stored.
struct PrinterChange {
    UnicodeString printer;
    std::vector<FieldChange> fields;  // the fields asked for, and others that change with them
    std::string note;                 // shown to the user beside the change
    std::string failure;
    std::optional<SettingsBlock> before, after;
    bool must_store = false;      // store even without a change: the user has no settings yet
    bool is_not_reached = false;  // the command was stopped before this printer; a failure too

    bool IsToStore() const;
};

// Does not throw when something is wrong with the printer: `failure` says it.
PrinterChange PlanChange(const Printer& printer, const std::vector<Assignment>& assignments,
                         bool force);

// Stores the change. Afterwards `fields` hold the values that the driver stored, or `failure` says
// what went wrong.
void StoreChange(PrinterChange& change);

// A value as it stands in a line of text; an empty value is shown as "".
std::string Shown(const UnicodeString& value);
// "(none)" where there is no value.
std::string Shown(const std::optional<UnicodeString>& value);

}  // namespace qv
