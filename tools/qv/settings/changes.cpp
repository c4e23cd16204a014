#include "settings/changes.h"

#include <algorithm>

#include "base/value_text.h"

namespace qv {

namespace {

bool IsAsked(const Field& field, const std::vector<const Field*>& asked) {
    return std::ranges::find(asked, &field) != asked.end();
}

// The fields that differ, and those of `asked`, in table order.
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

// The driver may adjust the values. Its result is what is reported and can be undone.
void StoreChange(PrinterChange& change) {
    try {
        const SettingsBlock stored = StoreUserSettings(change.printer, *change.after);
        for (const FieldChange& other : Differences(*change.after, stored)) {
            AddNote(change, "the driver made '" + OneLine(other.after) + "' of '" +
                                OneLine(other.before) + "' for " + NameOf(*other.field));
        }
        change.fields = Compare(*change.before, stored, FieldsOf(change.fields));
    } catch (const Failure& failure) {
        change.failure = failure.what();
    }
}

std::string Shown(const UnicodeString& value) {
    return value.Length() == 0 ? "\"\"" : ToValueText(value);
}

std::string Shown(const std::optional<UnicodeString>& value) {
    return value ? Shown(*value) : "(none)";
}

}  // namespace qv
