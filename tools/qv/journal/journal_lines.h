// The journal's bytes: a line of JSON for each thing that happened. docs/formats/journal.md
// describes them.
#pragma once

#include <string_view>

#include "journal/change_record.h"

namespace qv {

// Numbers of changes and processes stay whole in every reader of JSON.
constexpr std::uint64_t kLargestNumber = (1ULL << 53) - 1;

// What a line says. The first line of a file is its head.
std::string HeadLine();
std::string BeginLine(const ChangeRecord& change);
// What is to be done to a printer, or what became of it. The last one for a printer counts.
std::string TargetLine(std::uint64_t change, const TargetChange& target);
std::string EndLine(std::uint64_t change, ChangeState state);

enum class JournalHead { kGood, kNewer, kNone };
// Whether the file's bytes begin with a head that this program understands.
JournalHead ExamineHead(std::string_view bytes);

// The change that the line belongs to, or nothing when it is no line of a journal.
std::optional<std::uint64_t> ChangeOfLine(std::string_view line);

struct JournalContent {
    std::vector<ChangeRecord> changes;  // the oldest first
    int bad_lines = 0;                  // lines that say nothing; the others count all the same
};
// Reads to the end whatever the lines hold. A last line without its end is being written, or was
// when its program was killed: it does not count.
JournalContent ReadJournal(std::string_view bytes);

}  // namespace qv
