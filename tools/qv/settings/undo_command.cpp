// qv undo: undoes a change of the journal.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <memory>

#include "settings/change_list.h"
#include "settings/change_run.h"
#include "settings/field_value.h"
#include "settings/global_settings.h"
#include "settings/recorded_call.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

struct UndoOptions {
    ReportOptions report;
    JournalWait wait;
    std::uint64_t change = 0;
    bool list = false;
    bool force = false;
};

// True for a change that undo may choose by itself. A change that undid another one must be named
// by its number.
bool IsNext(const ChangeRecord& change) {
    return change.undoes == 0 && change.CanBeUndone();
}

// Names the changes behind the one of that number that undo would take back if it knew the values.
void TellUnknown(const std::vector<ChangeRecord>& changes, std::uint64_t behind) {
    for (const ChangeRecord& change : changes) {
        if (change.number <= behind || !change.HasUnknown()) continue;
        PrintError("change " + std::to_string(change.number) +
                   " did not come to its end: what it changed is not known, and is not taken back");
    }
}

// Lists the changes in the order in which undo takes them.
void List(const UndoOptions& options) {
    JournalContent journal = LoadJournal();
    std::vector<ChangeRecord> all = journal.changes;
    std::erase_if(journal.changes, [](const ChangeRecord& c) { return !IsNext(c); });
    std::ranges::reverse(journal.changes);
    TellUnknown(all, journal.changes.empty() ? 0 : journal.changes.front().number);
    if (options.report.json) {
        Json list = Json::array();
        for (const ChangeRecord& change : journal.changes) list.push_back(RecordJson(change));
        return PrintJson({{"scope", kScope}, {"changes", list}});
    }
    PrintScope();
    for (const ChangeRecord& change : journal.changes) PrintRecord(change);
}

std::string WhyNone(const std::vector<ChangeRecord>& changes, std::uint64_t wanted) {
    if (wanted == 0) return "no change to take back";
    const bool is_gone = !changes.empty() && wanted < changes.front().number;
    return "no change " + std::to_string(wanted) +
           (is_gone ? " any more: the journal keeps the newest ones, from " +
                          std::to_string(changes.front().number) + " on"
                    : "");
}

std::string WhyNot(const ChangeRecord& change) {
    const std::string number = std::to_string(change.number);
    if (!change.HasUnknown()) return "of change " + number + " nothing is left to take back";
    return "change " + number +
           " did not come to its end, and what it changed is not known: `qv get` shows what there "
           "is now, `qv set` or `qv apply FILE` sets it";
}

// The change with that number. Without a number: the newest change that did not undo another one.
ChangeRecord ToTakeBack(const UndoOptions& options) {
    JournalContent journal = LoadJournal();
    if (journal.bad_lines != 0 && !options.force) {
        throw Failure(
            "lines of the journal cannot be read (`qv audit` shows the others); --force "
            "goes on without them",
            ExitCode::kDamaged);
    }
    const auto is_wanted = [&options](const ChangeRecord& c) {
        return options.change != 0 ? c.number == options.change : IsNext(c);
    };
    const auto found = std::find_if(journal.changes.rbegin(), journal.changes.rend(), is_wanted);
    const bool is_found = found != journal.changes.rend();
    if (options.change == 0) TellUnknown(journal.changes, is_found ? found->number : 0);
    if (!is_found) throw Failure(WhyNone(journal.changes, options.change));
    if (!found->CanBeUndone()) throw Failure(WhyNot(*found));
    return std::move(*found);
}

// Says why the field cannot be undone: it has changed since. A field that already has its old value
// is fine.
std::string ChangedSince(const SettingsBlock& now, const FieldChange& change) {
    if (!now.Has(*change.field)) return NameOf(*change.field) + " is gone";
    const UnicodeString value = now.Get(*change.field);
    if (value == change.after || value == change.before) return "";
    return NameOf(*change.field) + " is " + Shown(value) + ", not " + Shown(change.after) +
           " as the change left it; --force restores it all the same";
}

// Checks the values of the journal before they are used. Throws Failure.
FieldChange CheckedField(const ValueChange& value) {
    const FieldChange change = {&RequireField(value.field), value.before.value_or(UnicodeString()),
                                value.after.value_or(UnicodeString())};
    const std::string reason = ValueFault(*change.field, change.before);
    if (reason.empty()) return change;
    throw Failure("'" + NameOf(*change.field) + "' cannot be set back to '" +
                  OneLine(change.before) + "': " + reason);
}

PrinterChange PlanUndo(const TargetChange& target, bool force) {
    PrinterChange change;
    change.printer = target.printer;
    std::vector<FieldChange> fields;
    std::vector<Assignment> assignments;
    try {
        for (const ValueChange& value : target.fields) fields.push_back(CheckedField(value));
        for (const FieldChange& field : fields) assignments.push_back({field.field, field.before});
        change = PlanChange(FindPrinter(target.printer), assignments, force);
    } catch (const Failure& failure) {
        change.failure = failure.what();
    }
    for (const FieldChange& field : fields) {
        if (force || !change.failure.empty()) break;
        change.failure = ChangedSince(*change.before, field);
    }
    return change;
}

// The product's own settings that undo sets back; `after` is the present value. Throws Failure when
// one has changed since.
std::vector<ValueChange> PlanGlobals(const ChangeRecord& change, bool force) {
    std::vector<ValueChange> values;
    for (const TargetChange& target : change.targets)
        if (target.is_global && target.CanBeUndone()) values = target.fields;
    for (ValueChange& value : values) {
        auto now = ReadGlobal(FromUtf8(value.field));
        if (!force && now != value.after && now != value.before) {
            throw Failure("the global setting '" + OneLine(FromUtf8(value.field)) +
                          "' is not as the change left it; --force restores it all the same; "
                          "nothing is restored");
        }
        value.after = std::move(now);
    }
    return values;
}

void RestoreGlobals(const std::vector<ValueChange>& values, Journal& journal,
                    std::uint64_t undoes) {
    CallTargets targets;
    for (const ValueChange& value : values) targets.globals.push_back(FromUtf8(value.field));
    RecordCall(targets, journal, undoes, [&values] {
        for (const ValueChange& value : values) WriteGlobal(FromUtf8(value.field), value.before);
    });
}

void Undo(const UndoOptions& options) {
    if (options.list) return List(options);
    Journal journal(options.wait);
    const ChangeRecord wanted = ToTakeBack(options);
    std::vector<PrinterChange> changes;
    for (const TargetChange& target : wanted.targets)
        if (target.CanBeUndone() && !target.is_global)
            changes.push_back(PlanUndo(target, options.force));
    const std::vector<ValueChange> globals = PlanGlobals(wanted, options.force);
    const bool all_well =
        std::ranges::all_of(changes, &std::string::empty, &PrinterChange::failure);
    RunResult result;
    if (!all_well && !options.force) {
        PrintError("nothing is restored");
        std::erase_if(changes, [](const PrinterChange& c) { return c.failure.empty(); });
    } else if (!options.report.dry_run) {
        result = MakeChanges(changes, &journal, wanted.number);
        if (!globals.empty() && !result.stopped) RestoreGlobals(globals, journal, wanted.number);
    }
    if (all_well || options.force) result.globals = globals;
    ReportOptions report = options.report;
    report.is_many = wanted.targets.size() > 1;
    ReportChanges(changes, result, report);
}

// Why the text is no number of a change. An empty one, as of a script's unset variable, must not
// mean the last change.
std::string IsChangeNumber(const std::string& text) {
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    const bool is_number = parsed.ec == std::errc() && parsed.ptr == end && number > 0;
    return is_number ? "" : Quoted(text) + " is no number of a change";
}

}  // namespace

void AddUndoCommand(CLI::App& app) {
    auto options = std::make_shared<UndoOptions>();
    CLI::App* command =
        app.add_subcommand("undo", "Take back the last change, or the change with a number");
    command
        ->add_option("CHANGE", options->change,
                     "The number of the change; --list and `qv audit` show it")
        ->check(IsChangeNumber, "");
    command->add_flag("--list", options->list, "Show the changes that can be taken back");
    command->add_flag("--force", options->force, "Also restore values that have changed since");
    AddReportOptions(*command, options->report);
    AddWaitOption(*command, options->wait);
    command->callback([options] { Undo(*options); });
}

}  // namespace qv
