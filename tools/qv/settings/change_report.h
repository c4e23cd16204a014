// What a command that changes settings says about it.
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
    bool only_changes = false;  // lines for what changes, not for all that was asked for
    bool is_many = false;       // printers that were not named one by one: a summary counts them
};
void AddReportOptions(CLI::App& command, ReportOptions& options);

// How the changes were stored.
struct RunResult {
    std::uint64_t change = 0;  // its number in the journal; 0 when it is not there
    bool stopped = false;
    std::vector<ValueChange> globals;        // the product's own settings that an undo sets back
    std::optional<Failure> journal_failure;  // its end could not be written down
};

// "PRINTER: FIELD: OLD -> NEW" lines, or JSON, on standard output; notes, failures and the summary
// on standard error. Throws a Failure without text when a printer failed.
void ReportChanges(const std::vector<PrinterChange>& changes, const RunResult& result,
                   const ReportOptions& options);

}  // namespace qv
