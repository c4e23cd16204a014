#include "settings/change_report.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

#include "settings/field_json.h"

namespace qv {

namespace {

struct Counts {
    std::size_t changed = 0, failed = 0;
};

Counts Count(const std::vector<PrinterChange>& changes) {
    Counts counts;
    for (const PrinterChange& change : changes) {
        counts.changed += change.IsToStore() ? 1 : 0;
        counts.failed += change.failure.empty() ? 0 : 1;
    }
    return counts;
}

Json ChangeJson(const PrinterChange& change) {
    Json fields = Json::array();
    for (const FieldChange& f : change.fields) {
        fields.push_back({{"name", NameOf(*f.field)},
                          {"old", FieldJson(*f.field, f.before)},
                          {"new", FieldJson(*f.field, f.after)},
                          {"changed", f.IsChange()}});
    }
    Json object = {{"printer", Text(change.printer)}, {"fields", fields}};
    if (!change.note.empty()) object["note"] = change.note;
    if (!change.failure.empty()) object["error"] = change.failure;
    return object;
}

Json GlobalJson(const std::optional<UnicodeString>& value) {
    return value ? Text(*value) : Json();
}

void PrintAsJson(const std::vector<PrinterChange>& changes, const RunResult& result,
                 const ReportOptions& options) {
    Json printers = Json::array();
    for (const PrinterChange& change : changes) printers.push_back(ChangeJson(change));
    const Counts counts = Count(changes);
    Json document = {{"scope", kScope},
                     {"dryRun", options.dry_run},
                     {"change", result.change == 0 ? Json() : Json(result.change)},
                     {"changed", counts.changed},
                     {"failed", counts.failed},
                     {"stopped", result.stopped},
                     {"printers", printers}};
    for (const ValueChange& value : result.globals)
        document["global"].push_back({{"name", value.field},
                                      {"old", GlobalJson(value.after)},
                                      {"new", GlobalJson(value.before)}});
    PrintJson(document);
}

void PrintGlobals(const std::vector<ValueChange>& values) {
    for (const ValueChange& value : values) {
        PrintLine("global settings: " + OneLine(FromUtf8(value.field)) + ": " + Shown(value.after) +
                  " -> " + Shown(value.before));
    }
}

// Prints to standard error, before the lines of the changes.
void PrintNotes(const std::vector<PrinterChange>& changes) {
    std::map<std::string, std::vector<const PrinterChange*>> notes;
    for (const PrinterChange& change : changes)
        if (!change.note.empty()) notes[change.note].push_back(&change);
    for (const auto& [note, printers] : notes) {
        PrintError((printers.size() == 1 ? OneLine(printers.front()->printer)
                                         : Counted(printers.size(), "printer")) +
                   ": " + note);
    }
}

void PrintChange(const PrinterChange& change, const ReportOptions& options) {
    const std::string printer = OneLine(change.printer) + ": ";
    if (!change.failure.empty()) return PrintError(printer + change.failure);
    if (options.quiet) return;
    const bool only_changes = options.only_changes || options.is_many;
    if (only_changes && std::ranges::none_of(change.fields, &FieldChange::IsChange)) {
        if (!options.is_many) PrintLine(printer + "nothing to change");
        return;
    }
    for (const FieldChange& f : change.fields) {
        if (only_changes && !f.IsChange()) continue;
        PrintLine(printer + NameOf(*f.field) + ": " + Shown(f.before) +
                  (f.IsChange() ? " -> " + Shown(f.after) : " (unchanged)"));
    }
}

std::string Summary(const std::vector<PrinterChange>& changes, const RunResult& result,
                    const ReportOptions& options) {
    const Counts counts = Count(changes);
    std::string text = Counted(changes.size(), "printer") + ": " + std::to_string(counts.changed) +
                       (options.dry_run ? " to change, " : " changed, ") +
                       std::to_string(changes.size() - counts.changed - counts.failed) +
                       " as wanted already, " + std::to_string(counts.failed) +
                       (result.stopped ? " failed or not reached" : " failed");
    if (result.change != 0)
        text += "; `qv undo " + std::to_string(result.change) + "` takes it back";
    return text;
}

}  // namespace

void AddReportOptions(CLI::App& command, ReportOptions& options) {
    command.add_flag("-n,--dry-run", options.dry_run, "Show the old and new values; write nothing");
    command.add_flag("-q,--quiet", options.quiet,
                     "Only failures and the summary, no line for each value");
    command.add_flag("--json", options.json, "One JSON document");
}

void ReportChanges(const std::vector<PrinterChange>& changes, const RunResult& result,
                   const ReportOptions& options) {
    PrintScope();
    if (options.dry_run) PrintError("dry run: nothing is written");
    if (options.json) {
        PrintAsJson(changes, result, options);
    } else {
        PrintNotes(changes);
        for (const PrinterChange& change : changes)
            if (!change.is_not_reached) PrintChange(change, options);
        PrintGlobals(result.globals);
        if (options.is_many) PrintError(Summary(changes, result, options));
    }
    if (result.stopped) PrintError("stopped on request");
    if (result.journal_failure) throw Failure(*result.journal_failure);
    if (Count(changes).failed > 0) throw Failure("");
}

}  // namespace qv
