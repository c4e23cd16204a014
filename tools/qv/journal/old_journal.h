// The journal of qv 1.0.0: one JSON document with the last 100 changes.
#pragma once

#include "journal/change_record.h"

namespace qv {

// Throws an exception of any kind when the bytes are no such journal.
std::vector<ChangeRecord> ReadOldJournal(const std::string& bytes);

}  // namespace qv
