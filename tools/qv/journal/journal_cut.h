// Bounds the journal: of a file that has grown long only the newest changes stay.
#pragma once

#include <string>

namespace qv {

// Replaces a journal of more than 8 MiB by one that begins with the first change of its newest 4
// MiB, or with the newest change when that one is longer. Numbers stay. The file has its old or its
// new content at every moment, also on the disk. Leaves it as it is when it cannot be replaced now,
// as on Windows while somebody reads it, and when it is no journal. For who holds the journal's
// lock and has the file not open.
void CutJournal(const std::string& name);

}  // namespace qv
