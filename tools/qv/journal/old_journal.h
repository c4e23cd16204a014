// The journal of qv 1.0.0: one JSON document with the last 100 changes.
#pragma once

#include "journal/change_record.h"

namespace qv {

// Throws some exception when the bytes are not such a journal.
std::vector<ChangeRecord> ReadOldJournal(const std::string& bytes);

}  // namespace qv
