// Records library calls that change settings themselves. The settings are read before and after the
// call, and the differences go to the journal.
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

// Makes the call. When there are targets, the journal gets the command and the targets before the
// call, and the changed values after it. An exception of the call goes on to the caller when the
// journal is complete. When the journal cannot be used, throws Failure and does not make the call.
void RecordCall(const CallTargets& targets, const RecordOptions& options,
                const std::function<void()>& call);

// The same with a journal that the caller has locked. Returns the changed values of the product's
// own settings.
std::vector<ValueChange> RecordCall(const CallTargets& targets, Journal& journal,
                                    std::uint64_t undoes, const std::function<void()>& call);

}  // namespace qv
