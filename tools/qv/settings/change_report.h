// The output of a command that changes settings.
#pragma once

#include <cstdint>

#include "journal/change_record.h"
#include "settings/changes.h"

namespace CLI {
class App;
}

namespace qv {

struct ReportOptions {
    bool dry_run = false;
    bool json = false;
    bool quiet = false;
    bool only_changes = false;  // no lines for fields that keep their value
    bool is_many = false;       // an option chose the printers: print a summary
};
void AddReportOptions(CLI::App& command, ReportOptions& options);

// The result of storing changes.
struct RunResult {
    std::uint64_t change = 0;  // its number in the journal; 0 when the journal does not have it
    bool stopped = false;
    std::vector<ValueChange> globals;        // own settings of the product that an undo set back
    std::optional<Failure> journal_failure;  // the end of the change could not be recorded
};

// Prints "PRINTER: FIELD: OLD -> NEW" lines or JSON to standard output, and notes, failures and the
// summary to standard error. Throws a Failure without text when a printer failed.
void ReportChanges(const std::vector<PrinterChange>& changes, const RunResult& result,
                   const ReportOptions& options);

}  // namespace qv
