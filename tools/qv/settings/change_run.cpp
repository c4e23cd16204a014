#include "settings/change_run.h"

#include <CLI/CLI.hpp>

#include "base/progress.h"
#include "settings/journal.h"

namespace qv {

namespace {

// The planned changes stand in the journal before the first is made: a program that ends in the
// middle leaves nothing that cannot be taken back.
void StoreWithJournal(Journal& journal, const std::string& command,
                      std::vector<PrinterChange>& changes) {
    JournalEntry planned = EntryOf(command, changes);
    if (planned.printers.empty()) return StoreChanges(changes);
    journal.entries.push_back(std::move(planned));
    journal.Save();
    StoreChanges(changes);
    journal.entries.back() = EntryOf(command, changes);
    if (journal.entries.back().printers.empty()) journal.entries.pop_back();
    journal.Save();
}

std::vector<PrinterChange> Plan(const PrinterChoice& choice, const AssignmentsFor& assignments) {
    const std::vector<Printer> printers = ChoosePrinters(choice);
    Progress progress("printers read", printers.size());
    std::vector<PrinterChange> changes;
    for (const Printer& printer : printers) {
        changes.push_back(PlanChange(printer, assignments(printer), choice.force));
        progress.Add();
    }
    return changes;
}

}  // namespace

void AddRunOptions(CLI::App& command, RunOptions& options) {
    AddReportOptions(command, options.report);
    command.add_flag("--no-undo", options.no_undo, "Do not keep the previous values for `qv undo`");
}

void RunChanges(const std::string& command, const PrinterChoice& choice,
                const AssignmentsFor& assignments, const RunOptions& options) {
    std::optional<Journal> journal;
    if (!options.report.dry_run && !options.no_undo) journal.emplace();
    std::vector<PrinterChange> changes = Plan(choice, assignments);
    if (journal) {
        StoreWithJournal(*journal, command, changes);
    } else if (!options.report.dry_run) {
        StoreChanges(changes);
    }
    journal.reset();
    ReportChanges(changes, options.report);
}

}  // namespace qv
