// Calls of the library that change settings by themselves: what they changed is found by looking
// before and behind, and stands in the journal.
#pragma once

#include <functional>

#include "journal/journal.h"

namespace qv {

struct RecordOptions {
    JournalWait wait;
    bool no_undo = false;
};
// --wait, --no-undo.
void AddRecordOptions(CLI::App& command, RecordOptions& options);

// What a call may change: users' settings of printers, and the product's own settings by name.
struct CallTargets {
    std::vector<UnicodeString> printers, globals;
};

// Makes the call. When it may change something, the journal names the command and the targets
// before, and the values behind. What the call throws passes, with the journal complete. Throws
// Failure as well when the journal cannot be used; the call is not made then.
void RecordCall(const CallTargets& targets, const RecordOptions& options,
                const std::function<void()>& call);

// The same with a journal that is held already. Returns the values of the product's settings that
// were changed.
std::vector<ValueChange> RecordCall(const CallTargets& targets, Journal& journal,
                                    std::uint64_t undoes, const std::function<void()>& call);

}  // namespace qv
