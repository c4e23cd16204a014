#include "settings/change_run.h"

#include <CLI/CLI.hpp>

#include "base/host.h"
#include "base/progress.h"

namespace qv {

namespace {

constexpr const char* kNotReached = "stopped before it";

TargetChange TargetOf(const PrinterChange& change) {
    TargetChange target;
    target.printer = change.printer;
    target.failure = change.failure;
    for (const FieldChange& field : change.fields) {
        if (field.IsChange() && !IsLayout(*field.field))
            target.fields.push_back({NameOf(*field.field), field.before, field.after});
    }
    return target;
}

// The changes that the journal records. An undo also records printers that already have the old
// values.
std::vector<PrinterChange*> ToMake(std::vector<PrinterChange>& changes, bool is_undo) {
    std::vector<PrinterChange*> chosen;
    for (PrinterChange& change : changes)
        if (change.IsToStore() || (is_undo && change.failure.empty())) chosen.push_back(&change);
    return chosen;
}

// When the group cannot be committed, nothing was stored: every change that went well fails too.
void Keep(ChangeGroup& group, const std::vector<PrinterChange*>& changes) {
    const DWORD code = group.Keep();
    for (PrinterChange* change : changes) {
        if (code != NO_ERROR && change->failure.empty())
            change->failure = "cannot store the settings: " + SystemText(code);
    }
}

// Stores all changes as one group. Returns false when the user stopped it.
bool StoreEach(const std::vector<PrinterChange*>& changes, const StopRequest& stop) {
    Progress progress("printers set", changes.size());
    ChangeGroup group;
    bool stopped = false;
    for (PrinterChange* change : changes) {
        stopped = stopped || stop.IsMade();
        progress.Add();
        if (stopped) {
            change->is_not_reached = true;
            change->failure = kNotReached;
        } else if (change->IsToStore()) {
            StoreChange(*change);
        }
    }
    Keep(group, changes);
    return !stopped;
}

std::vector<PrinterChange> Plan(const PrinterChoice& choice, const AssignmentsFor& assignments) {
    const std::vector<Printer> printers = ChoosePrinters(choice, Purpose::kChange);
    Progress progress("printers read", printers.size());
    std::vector<PrinterChange> changes;
    changes.reserve(printers.size());
    for (const Printer& printer : printers) {
        changes.push_back(PlanChange(printer, assignments(printer), choice.force));
        progress.Add();
    }
    return changes;
}

}  // namespace

void AddRunOptions(CLI::App& command, RunOptions& options) {
    AddReportOptions(command, options.report);
    AddWaitOption(command, options.wait);
    command.add_flag("--no-undo", options.no_undo, "Leave the change out of the journal");
}

RunResult MakeChanges(std::vector<PrinterChange>& changes, Journal* journal, std::uint64_t undoes) {
    const StopRequest stop;
    const std::vector<PrinterChange*> chosen = ToMake(changes, undoes != 0);
    RunResult result;
    std::vector<TargetChange> planned;
    planned.reserve(chosen.size());
    for (const PrinterChange* change : chosen) planned.push_back(TargetOf(*change));
    if (journal != nullptr && !planned.empty()) result.change = journal->Begin(planned, undoes);
    result.stopped = !StoreEach(chosen, stop);
    if (result.change == 0) return result;
    std::vector<TargetChange> differing;
    for (std::size_t i = 0; i < chosen.size(); ++i)
        if (TargetChange made = TargetOf(*chosen[i]); made != planned[i])
            differing.push_back(std::move(made));
    try {
        journal->End(result.change, differing,
                     result.stopped ? ChangeState::kStopped : ChangeState::kDone);
    } catch (const Failure& failure) {
        result.journal_failure = failure;
    }
    return result;
}

void RunChanges(const PrinterChoice& choice, const AssignmentsFor& assignments,
                const RunOptions& options) {
    std::optional<Journal> journal;
    if (!options.report.dry_run && !options.no_undo) journal.emplace(options.wait);
    std::vector<PrinterChange> changes = Plan(choice, assignments);
    RunResult result;
    if (!options.report.dry_run) result = MakeChanges(changes, journal ? &*journal : nullptr);
    journal.reset();
    ReportOptions report = options.report;
    report.is_many = choice.IsMany();
    ReportChanges(changes, result, report);
}

}  // namespace qv
