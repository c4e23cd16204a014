// qv audit: who changed what.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "journal/journal.h"
#include "log/time_words.h"
#include "settings/change_list.h"
#include "settings/printer_choice.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

struct AuditOptions {
    std::string printer, field, user;
    std::optional<std::string> since;
    bool json = false;
};

bool Fits(const UnicodeString& text, const std::string& pattern) {
    return pattern.empty() || Matches(text, FromUtf8(pattern));
}

// A time that cannot be read is never too old.
bool IsOlder(const ChangeRecord& change, LogTime since) {
    LogTime time = 0;
    return since != 0 && ParseTime(change.time, since, time) && time < since;
}

// Removes from the change what was not asked for. Returns false when nothing is left.
bool Narrow(ChangeRecord& change, const AuditOptions& options, LogTime since) {
    if (!Fits(FromUtf8(change.user), options.user) || IsOlder(change, since)) return false;
    if (options.printer.empty() && options.field.empty()) return true;
    for (TargetChange& target : change.targets) {
        std::erase_if(target.fields, [&options](const ValueChange& f) {
            return !Fits(FromUtf8(f.field), options.field);
        });
    }
    std::erase_if(change.targets, [&options](const TargetChange& target) {
        return !Fits(target.printer, options.printer) ||
               (!options.field.empty() && target.fields.empty());
    });
    return !change.targets.empty();
}

void Audit(const AuditOptions& options) {
    const LogTime since = options.since ? TimeOption("--since", *options.since) : 0;
    JournalContent journal = LoadJournal();
    std::erase_if(journal.changes,
                  [&](ChangeRecord& change) { return !Narrow(change, options, since); });
    if (options.json) {
        Json list = Json::array();
        for (const ChangeRecord& change : journal.changes) list.push_back(RecordJson(change));
        PrintJson({{"scope", kScope}, {"badLines", journal.bad_lines}, {"changes", list}});
    } else {
        PrintScope();
        for (const ChangeRecord& change : journal.changes) PrintRecord(change);
    }
    if (journal.bad_lines == 0) return;
    throw Failure(Counted(static_cast<std::uint64_t>(journal.bad_lines), "line") +
                      " of the journal cannot be read",
                  ExitCode::kDamaged);
}

}  // namespace

void AddAuditCommand(CLI::App& app) {
    auto options = std::make_shared<AuditOptions>();
    CLI::App* command = app.add_subcommand(
        "audit", "Show who changed what with this tool: the journal, the oldest change first");
    const auto add = [command](const char* name, auto& value, const char* type, const char* text) {
        command->add_option(name, value, text)->type_name(type);
    };
    add("--printer", options->printer, "PATTERN", "Only printers whose name fits: * and ?");
    add("--field", options->field, "PATTERN", "Only fields whose name fits");
    add("--user", options->user, "PATTERN", "Only changes of users whose name fits");
    add("--since", options->since, "TIME",
        "Only changes from this time on; forms as in `qv log show`");
    command->add_flag("--json", options->json, "One JSON document");
    command->callback([options] { Audit(*options); });
}

}  // namespace qv
