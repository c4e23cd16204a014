#include "settings/changes.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "base/progress.h"
#include "settings/field_json.h"
#include "settings/value_text.h"

namespace qv {

namespace {

bool IsAsked(const Field& field, const std::vector<const Field*>& asked) {
    return std::ranges::find(asked, &field) != asked.end();
}

// The fields that differ and those of `asked`, in the order of the table.
std::vector<FieldChange> Compare(const SettingsBlock& before, const SettingsBlock& after,
                                 const std::vector<const Field*>& asked) {
    std::vector<FieldChange> fields;
    for (const Field* field : AllFields()) {
        if (!before.Has(*field) || !after.Has(*field)) {
            if (after.Has(*field) && IsAsked(*field, asked))
                fields.push_back({field, UnicodeString(), after.Get(*field)});
            continue;
        }
        FieldChange change = {field, before.Get(*field), after.Get(*field)};
        if (change.IsChange() || IsAsked(*field, asked)) fields.push_back(std::move(change));
    }
    return fields;
}

std::vector<const Field*> FieldsOf(const std::vector<FieldChange>& changes) {
    std::vector<const Field*> fields;
    fields.reserve(changes.size());
    for (const FieldChange& change : changes) fields.push_back(change.field);
    return fields;
}

void Assign(SettingsBlock& block, const std::vector<Assignment>& assignments) {
    for (const Assignment& a : assignments) {
        const std::string reason = block.Set(*a.field, a.text);
        if (!reason.empty())
            throw Failure(LinePrefix(a.line) + "'" + NameOf(*a.field) + "' cannot be set to '" +
                          OneLine(a.text) + "': " + reason);
    }
    const std::string reason = block.Finish();
    if (!reason.empty()) throw Failure(reason);
}

void AddNote(PrinterChange& change, const std::string& note) {
    change.note += (change.note.empty() ? "" : "; ") + note;
}

// The driver has the last word: what it stored is what is reported and can be undone.
void Store(PrinterChange& change) {
    const SettingsBlock stored = StoreUserSettings(change.printer, *change.after);
    for (const FieldChange& other : Differences(*change.after, stored)) {
        AddNote(change, "the driver made '" + OneLine(other.after) + "' of '" +
                            OneLine(other.before) + "' for " + NameOf(*other.field));
    }
    change.fields = Compare(*change.before, stored, FieldsOf(change.fields));
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

void PrintChange(const PrinterChange& change, bool only_changes) {
    const std::string printer = OneLine(change.printer) + ": ";
    if (!change.note.empty()) PrintError(printer + change.note);
    if (!change.failure.empty()) return PrintError(printer + change.failure);
    if (only_changes && std::ranges::none_of(change.fields, &FieldChange::IsChange))
        return PrintLine(printer + "nothing to change");
    for (const FieldChange& f : change.fields) {
        if (only_changes && !f.IsChange()) continue;
        PrintLine(printer + NameOf(*f.field) + ": " + Shown(f.before) +
                  (f.IsChange() ? " -> " + Shown(f.after) : " (unchanged)"));
    }
}

}  // namespace

bool PrinterChange::IsToStore() const {
    return failure.empty() && (must_store || std::ranges::any_of(fields, &FieldChange::IsChange));
}

PrinterChange PlanChange(const Printer& printer, const std::vector<Assignment>& assignments,
                         bool force) {
    PrinterChange change;
    change.printer = printer.name;
    try {
        StartingSettings start = ReadStart(printer, force);
        change.note = start.note;
        change.must_store = !start.is_users;
        change.after = start.block.Copy();
        change.before = std::move(start.block);
        Assign(*change.after, assignments);
        std::vector<const Field*> asked;
        asked.reserve(assignments.size());
        for (const Assignment& a : assignments) asked.push_back(a.field);
        change.fields = Compare(*change.before, *change.after, asked);
    } catch (const Failure& failure) {
        change.failure = failure.what();
    }
    return change;
}

void StoreChanges(std::vector<PrinterChange>& changes) {
    Progress progress("printers set", changes.size());
    for (PrinterChange& change : changes) {
        progress.Add();
        if (!change.IsToStore()) continue;
        try {
            Store(change);
        } catch (const Failure& failure) {
            change.failure = failure.what();
        }
    }
}

void AddReportOptions(CLI::App& command, ReportOptions& options) {
    command.add_flag("-n,--dry-run", options.dry_run, "Show the old and new values; write nothing");
    command.add_flag("--json", options.json, "One JSON document");
}

void ReportChanges(const std::vector<PrinterChange>& changes, const ReportOptions& options) {
    PrintScope();
    if (options.dry_run) PrintError("dry run: nothing is written");
    if (options.json) {
        Json printers = Json::array();
        for (const PrinterChange& change : changes) printers.push_back(ChangeJson(change));
        PrintJson({{"scope", kScope}, {"dryRun", options.dry_run}, {"printers", printers}});
    }
    bool failed = false;
    for (const PrinterChange& change : changes) {
        if (!options.json) PrintChange(change, options.only_changes);
        failed = failed || !change.failure.empty();
    }
    if (failed) throw Failure("");
}

std::string Shown(const UnicodeString& value) {
    return value.Length() == 0 ? "\"\"" : ToValueText(value);
}

}  // namespace qv
