// The user's journal of changes, from which the last one can be taken back.
#pragma once

#include "mox_classes/memory/handles.h"
#include "settings/changes.h"

namespace qv {

struct JournalPrinter {
    UnicodeString name;
    std::vector<FieldChange> fields;
};

// One command that changed settings.
struct JournalEntry {
    std::string time;  // ISO 8601, UTC
    std::string command;
    std::vector<JournalPrinter> printers;
};

// The changes that were, or are about to be, stored.
JournalEntry EntryOf(const std::string& command, const std::vector<PrinterChange>& changes);

// The file as it is, held by this program until the object goes, so that two programs do not
// overwrite each other's changes. It is replaced whole by Save. The constructor throws Failure:
// kCannotOpen when the place cannot be used, kDamaged for a file that is no journal.
class Journal {
  public:
    Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // The newest last. At most kMostEntries are kept by Save.
    std::vector<JournalEntry> entries;
    void Save() const;

    static constexpr std::size_t kMostEntries = 100;

  private:
    System::TFileHandle lock_;
};

}  // namespace qv
