// The user's journal: a file that says who changed what, so that it can be undone.
#pragma once

#include "journal/journal_lines.h"
#include "mox_classes/memory/handles.h"

namespace CLI {
class App;
}

namespace qv {

// How long a command waits while another program changes settings.
struct JournalWait {
    std::string seconds;  // empty: the usual time; "true": without limit; else a number
};
// --wait[=SECONDS]
void AddWaitOption(CLI::App& command, JournalWait& wait);

// Reads the journal as it is now. Does not wait for a program that changes settings. Falls back to
// the journal of qv 1.0.0 when there is no newer one. Throws Failure: kDamaged for a file that is
// not a journal, kCannotOpen for a file that cannot be read.
JournalContent LoadJournal();

// Locks the journal while the object lives, so that only one program at a time reads settings and
// changes them. Only whole lines are added; they are on the disk when a call returns. Every call
// throws Failure (kCannotOpen, or kDamaged for a file that is not a journal) and then leaves the
// file unchanged. One thread at a time.
class Journal {
  public:
    explicit Journal(const JournalWait& wait);
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // Adds a change with its targets, the next number, the time, the user, the host and this
    // program's command line. Returns the number.
    std::uint64_t Begin(std::vector<TargetChange> targets, std::uint64_t undoes = 0);
    // Adds the targets whose result differs from what Begin added, and the end of the change.
    void End(std::uint64_t change, const std::vector<TargetChange>& differing, ChangeState state);

  private:
    void Open();
    void Append(const std::string& lines);

    System::TFileHandle lock_, file_;
    std::uint64_t last_ = 0;  // number of the newest change
};

}  // namespace qv
