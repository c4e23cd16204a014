#include "settings/recorded_call.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "base/host.h"
#include "settings/global_settings.h"
#include "settings/printer_settings.h"

namespace qv {

namespace {

// The user's settings, else those that a change would start from. Nothing when there are none.
std::optional<SettingsBlock> Snapshot(const Printer& printer) {
    try {
        return ReadStart(printer, true).block.Copy();
    } catch (const Failure&) {
        return {};
    }
}

// The targets as they are, to be compared with what they are later.
class Before {
  public:
    explicit Before(const CallTargets& targets) : globals_(targets.globals) {
        for (const UnicodeString& name : targets.printers) AddPrinter(name);
        for (const UnicodeString& name : globals_) values_.push_back(ReadGlobal(name));
    }

    // With what has changed since the object was made: nothing at first.
    std::vector<TargetChange> Targets() const {
        std::vector<TargetChange> targets;
        for (std::size_t i = 0; i < printers_.size(); ++i) {
            TargetChange target;
            target.printer = printers_[i].name;
            target.fields = PrinterChanges(i);
            targets.push_back(std::move(target));
        }
        if (!globals_.empty()) targets.push_back(GlobalTarget());
        return targets;
    }

  private:
    // By the name that the system knows, each once.
    void AddPrinter(const UnicodeString& name) {
        try {
            Printer found = FindPrinter(name);
            if (std::ranges::find(printers_, found.name, &Printer::name) != printers_.end()) return;
            blocks_.push_back(Snapshot(found));
            printers_.push_back(std::move(found));
        } catch (const Failure&) {
            return;
        }
    }

    std::vector<ValueChange> PrinterChanges(std::size_t i) const {
        std::vector<ValueChange> changes;
        const std::optional<SettingsBlock> now = Snapshot(printers_[i]);
        if (!blocks_[i] || !now) return changes;
        for (const FieldChange& f : Differences(*blocks_[i], *now))
            if (!IsLayout(*f.field)) changes.push_back({NameOf(*f.field), f.before, f.after});
        return changes;
    }

    TargetChange GlobalTarget() const {
        TargetChange target;
        target.is_global = true;
        for (std::size_t i = 0; i < globals_.size(); ++i) {
            std::optional<UnicodeString> now = ReadGlobal(globals_[i]);
            if (now != values_[i])
                target.fields.push_back({ToUtf8(globals_[i]), values_[i], std::move(now)});
        }
        return target;
    }

    std::vector<Printer> printers_;
    std::vector<std::optional<SettingsBlock>> blocks_;  // one for each printer
    std::vector<UnicodeString> globals_;
    std::vector<std::optional<UnicodeString>> values_;
};

}  // namespace

void AddRecordOptions(CLI::App& command, RecordOptions& options) {
    AddWaitOption(command, options.wait);
    command.add_flag("--no-undo", options.no_undo, "Leave the change out of the journal");
}

std::vector<ValueChange> RecordCall(const CallTargets& targets, Journal& journal,
                                    std::uint64_t undoes, const std::function<void()>& call) {
    const Before before(targets);
    const std::vector<TargetChange> planned = before.Targets();
    if (planned.empty()) {
        call();  // none of the printers is there
        return {};
    }
    const std::uint64_t change = journal.Begin(planned, undoes);
    std::exception_ptr thrown;
    {
        const StopRequest stop;  // the end is written down whatever is asked for meanwhile
        try {
            call();
        } catch (...) {
            thrown = std::current_exception();
        }
    }
    std::vector<TargetChange> made = before.Targets();
    for (TargetChange& target : made)
        if (thrown && target.fields.empty()) target.failure = "the command failed";
    journal.End(change, made, ChangeState::kDone);
    if (thrown) std::rethrow_exception(thrown);
    return !made.empty() && made.back().is_global ? made.back().fields : std::vector<ValueChange>();
}

void RecordCall(const CallTargets& targets, const RecordOptions& options,
                const std::function<void()>& call) {
    if (options.no_undo || (targets.printers.empty() && targets.globals.empty())) return call();
    Journal journal(options.wait);
    RecordCall(targets, journal, 0, call);
}

}  // namespace qv
