// A command's changes as the journal keeps them: who, when, with what, and each value before and
// after.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "mox_classes/text/unicode_string.h"

namespace qv {

// Nothing stands for a value that is missing: a setting of the product may be.
struct ValueChange {
    std::string field;
    std::optional<UnicodeString> before, after;

    bool operator==(const ValueChange&) const = default;
};

// What happened to one printer, or to the product's own settings in the registry.
struct TargetChange {
    UnicodeString printer;
    bool is_global = false;  // the product's settings; `printer` is empty then
    std::vector<ValueChange> fields;
    std::string failure;  // why nothing was changed
    bool undone = false;  // worked out from the changes behind it

    bool operator==(const TargetChange&) const = default;
    bool IsMade() const { return failure.empty(); }
    bool CanBeUndone() const { return IsMade() && !undone && !fields.empty(); }
};

enum class ChangeState {
    kUnfinished,  // the command runs still, or was ended in the middle
    kDone,
    kStopped,  // by the user, between two printers
};

struct ChangeRecord {
    std::uint64_t number = 0;  // grows from change to change
    std::string time;          // ISO 8601, UTC
    std::string user, host;    // empty where they are not known
    std::uint64_t process = 0;
    std::vector<std::string> command;
    std::uint64_t undoes = 0;  // the number of the change that this one takes back, or 0
    ChangeState state = ChangeState::kUnfinished;
    std::vector<TargetChange> targets;

    // Whether something of it can be taken back.
    bool CanBeUndone() const;
};

}  // namespace qv
