// Changes of the journal as the tool lists them.
#pragma once

#include "base/json_output.h"
#include "journal/change_record.h"

namespace qv {

// A line that says who, when and with what, then a line for each value.
void PrintRecord(const ChangeRecord& change);
Json RecordJson(const ChangeRecord& change);

}  // namespace qv
