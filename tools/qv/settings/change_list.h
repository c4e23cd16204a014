// Prints changes of the journal.
#pragma once

#include "base/json_output.h"
#include "journal/change_record.h"

namespace qv {

// Prints one line with the user, the time and the command, then a line for each value.
void PrintRecord(const ChangeRecord& change);
Json RecordJson(const ChangeRecord& change);

}  // namespace qv
