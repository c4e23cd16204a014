// A change as the journal keeps it: the user, the time, the command, and each value before and
// after it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mox_classes/text/unicode_string.h"

namespace qv {

// nullopt stands for a value that does not exist. Settings of the product may be missing.
struct ValueChange {
    std::string field;
    std::optional<UnicodeString> before, after;

    bool operator==(const ValueChange&) const = default;
};

// The changes of one printer, or of the product's own settings in the registry.
struct TargetChange {
    UnicodeString printer;
    bool is_global = false;  // the product's settings; `printer` is empty then
    std::vector<ValueChange> fields;
    std::string failure;  // why nothing was changed, or empty
    bool undone = false;  // a later change took it back

    bool operator==(const TargetChange&) const = default;
    bool IsMade() const { return failure.empty(); }
    bool CanBeUndone() const { return IsMade() && !undone && !fields.empty(); }
};

enum class ChangeState {
    kUnfinished,  // the command still runs, or was killed
    kDone,
    kStopped,  // the user stopped it between two printers
};

struct ChangeRecord {
    std::uint64_t number = 0;  // grows from change to change
    std::string time;          // ISO 8601, UTC
    std::string user, host;    // empty when not known
    std::uint64_t process = 0;
    std::vector<std::string> command;
    std::uint64_t undoes = 0;  // the number of the change that this one takes back, or 0
    ChangeState state = ChangeState::kUnfinished;
    std::vector<TargetChange> targets;

    // True when at least one target can be undone.
    bool CanBeUndone() const;
    // True when the values of the target are not known. Commands that let the library change
    // settings write the values down at their end only.
    bool IsUnknown(const TargetChange& target) const;
    bool HasUnknown() const;
};

}  // namespace qv
