// qv undo: takes back the last change of the current user's settings.
#include <CLI/CLI.hpp>
#include <memory>

#include "settings/field_json.h"
#include "settings/journal.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

struct UndoOptions {
    ReportOptions report;
    bool list = false;
    bool force = false;
};

Json EntryJson(const JournalEntry& entry) {
    Json printers = Json::array();
    for (const JournalPrinter& printer : entry.printers) {
        Json fields = Json::array();
        for (const FieldChange& f : printer.fields) {
            fields.push_back({{"name", NameOf(*f.field)},
                              {"old", FieldJson(*f.field, f.before)},
                              {"new", FieldJson(*f.field, f.after)}});
        }
        printers.push_back({{"printer", Text(printer.name)}, {"fields", fields}});
    }
    return {{"time", entry.time}, {"command", entry.command}, {"printers", printers}};
}

void PrintEntry(const JournalEntry& entry) {
    PrintLine(OneLine(FromUtf8(entry.time)) + " " + OneLine(FromUtf8(entry.command)));
    for (const JournalPrinter& printer : entry.printers) {
        for (const FieldChange& f : printer.fields) {
            PrintLine("  " + OneLine(printer.name) + ": " + NameOf(*f.field) + ": " +
                      Shown(f.before) + " -> " + Shown(f.after));
        }
    }
}

// The change that undo takes back first stands first.
void List(const Journal& journal, bool as_json) {
    if (!as_json) {
        PrintScope();
        for (std::size_t i = journal.entries.size(); i-- > 0;) PrintEntry(journal.entries[i]);
        return;
    }
    Json list = Json::array();
    for (std::size_t i = journal.entries.size(); i-- > 0;)
        list.push_back(EntryJson(journal.entries[i]));
    PrintJson({{"scope", kScope}, {"changes", list}});
}

// Why the field is not as the change left it; a field that is back already is no reason.
std::string ChangedSince(const SettingsBlock& now, const FieldChange& change) {
    if (!now.Has(*change.field)) return NameOf(*change.field) + " is gone";
    const UnicodeString value = now.Get(*change.field);
    if (value == change.after || value == change.before) return "";
    return NameOf(*change.field) + " is " + Shown(value) + ", not " + Shown(change.after) +
           " as the change left it";
}

PrinterChange PlanUndo(const JournalPrinter& entry, bool force) {
    PrinterChange change;
    change.printer = entry.name;
    std::vector<Assignment> assignments;
    for (const FieldChange& field : entry.fields)
        assignments.push_back({field.field, field.before});
    try {
        change = PlanChange(FindPrinter(entry.name), assignments, force);
    } catch (const Failure& failure) {
        change.failure = failure.what();
    }
    for (const FieldChange& field : entry.fields) {
        if (force || !change.failure.empty()) break;
        const std::string reason = ChangedSince(*change.before, field);
        if (!reason.empty()) change.failure = reason + "; --force restores it all the same";
    }
    return change;
}

// What could not be restored stays in the journal.
void Settle(Journal& journal, const std::vector<PrinterChange>& changes) {
    std::vector<JournalPrinter>& printers = journal.entries.back().printers;
    std::vector<JournalPrinter> failed;
    for (std::size_t i = 0; i < changes.size(); ++i)
        if (!changes[i].failure.empty()) failed.push_back(std::move(printers[i]));
    printers = std::move(failed);
    if (printers.empty()) journal.entries.pop_back();
    journal.Save();
}

void Undo(const UndoOptions& options) {
    Journal journal;
    if (options.list) return List(journal, options.report.json);
    if (journal.entries.empty()) throw Failure("no change to take back");
    std::vector<PrinterChange> changes;
    bool all_well = true;
    for (const JournalPrinter& printer : journal.entries.back().printers) {
        changes.push_back(PlanUndo(printer, options.force));
        all_well = all_well && changes.back().failure.empty();
    }
    if (!all_well && !options.force) {
        PrintError("nothing is restored");
        std::erase_if(changes, [](const PrinterChange& c) { return c.failure.empty(); });
    } else if (!options.report.dry_run) {
        StoreChanges(changes);
        Settle(journal, changes);
    }
    ReportChanges(changes, options.report);
}

}  // namespace

void AddUndoCommand(CLI::App& app) {
    auto options = std::make_shared<UndoOptions>();
    CLI::App* command = app.add_subcommand(
        "undo", "Take back the last change that set or apply made; again for the one before");
    command->add_flag("--list", options->list, "Show the changes that can be taken back");
    command->add_flag("--force", options->force, "Also values that have changed since");
    AddReportOptions(*command, options->report);
    command->callback([options] { Undo(*options); });
}

}  // namespace qv
