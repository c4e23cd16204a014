// The lines of the journal file: one JSON object for each event. docs/formats/journal.md describes
// them.
#pragma once

#include <string_view>

#include "journal/change_record.h"

namespace qv {

// The largest number that every JSON reader keeps exactly.
constexpr std::uint64_t kLargestNumber = (1ULL << 53) - 1;

// Each returns one line. The first line of a file is its head.
std::string HeadLine();
std::string BeginLine(const ChangeRecord& change);
// The planned or actual change of a printer. The last line for a printer counts.
std::string TargetLine(std::uint64_t change, const TargetChange& target);
std::string EndLine(std::uint64_t change, ChangeState state);

enum class JournalHead { kGood, kNewer, kNone };
// Says whether the bytes begin with a head that this program understands.
JournalHead ExamineHead(std::string_view bytes);

// The number of the line's change, or nullopt when it is not a line of a journal.
std::optional<std::uint64_t> ChangeOfLine(std::string_view line);
// True for a line with which a change begins.
bool IsBeginLine(std::string_view line);

struct JournalContent {
    std::vector<ChangeRecord> changes;  // the oldest first
    int bad_lines = 0;                  // lines that cannot be read; the others still count
};
// Reads to the end, also behind bad lines. Ignores a last line without a line end: a program is
// writing it, or was killed while it wrote.
JournalContent ReadJournal(std::string_view bytes);

}  // namespace qv
