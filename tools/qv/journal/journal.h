// The user's journal of changes: who changed what, and what can be taken back.
#pragma once

#include "journal/journal_lines.h"
#include "mox_classes/memory/handles.h"

namespace CLI {
class App;
}

namespace qv {

// How long a command waits while another program changes settings.
struct JournalWait {
    std::string seconds;  // empty: the usual time; "true": no end; else a number
};
// --wait[=SECONDS]
void AddWaitOption(CLI::App& command, JournalWait& wait);

// The journal's file as it is now, without waiting for a program that changes settings. Journals of
// qv 1.0.0 count when there is no newer one. Throws Failure: kDamaged for a file that is no
// journal, kCannotOpen for one that cannot be read.
JournalContent LoadJournal();

// The journal held by this program until the object goes: of two programs none changes what the
// other has read. Lines are only ever added, whole, and are on the disk when a call returns. Every
// call throws Failure (kCannotOpen, or kDamaged for a file that is no journal), and leaves the file
// as it was then. One thread at a time.
class Journal {
  public:
    explicit Journal(const JournalWait& wait);
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // Gives the change the next number, the time, the user, the host and the command that runs, and
    // adds it with its targets. Returns the number.
    std::uint64_t Begin(std::vector<TargetChange> targets, std::uint64_t undoes = 0);
    // Adds what became of targets otherwise than they were added, and the end.
    void End(std::uint64_t change, const std::vector<TargetChange>& differing, ChangeState state);

  private:
    void Open();
    void Append(const std::string& lines);

    System::TFileHandle lock_, file_;
    std::uint64_t last_ = 0;  // number of the newest change
};

}  // namespace qv
