// Changes of printers' settings: worked out first, then stored printer by printer, and shown with
// the old and the new value of every field.
#pragma once

#include "settings/printer_settings.h"
#include "settings/settings_text.h"

namespace CLI {
class App;
}

namespace qv {

// What happens to one printer. With a failure nothing of it is stored.
struct PrinterChange {
    UnicodeString printer;
    std::vector<FieldChange> fields;  // those asked for, and what else changes with them
    std::string note;                 // for the user, beside the change
    std::string failure;
    std::optional<SettingsBlock> before, after;
    bool must_store = false;  // although no field changes: the user has no settings yet

    bool IsToStore() const;
};

// Never throws for what is wrong with the printer; that is the change's failure.
PrinterChange PlanChange(const Printer& printer, const std::vector<Assignment>& assignments,
                         bool force);

// Stores what is to be stored and goes on with the next printer when one fails. `fields` then say
// what the drivers made of it.
void StoreChanges(std::vector<PrinterChange>& changes);

struct ReportOptions {
    bool dry_run = false;
    bool json = false;
    bool only_changes = false;  // lines for what changes, not for all that was asked for
};
void AddReportOptions(CLI::App& command, ReportOptions& options);

// "PRINTER: FIELD: OLD -> NEW" lines, or JSON, on standard output; notes and failures on standard
// error. Throws a Failure without text when a printer failed.
void ReportChanges(const std::vector<PrinterChange>& changes, const ReportOptions& options);

// A value in a line of text: as in the text form, the empty text as "".
std::string Shown(const UnicodeString& value);

}  // namespace qv
