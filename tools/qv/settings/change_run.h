// Runs a command that changes settings. It writes the changes to the journal, then stores them,
// one printer after the other.
#pragma once

#include <functional>

#include "journal/journal.h"
#include "settings/change_report.h"
#include "settings/printer_choice.h"

namespace qv {

struct RunOptions {
    ReportOptions report;
    JournalWait wait;
    bool no_undo = false;
};
void AddRunOptions(CLI::App& command, RunOptions& options);

// What a printer is to be given.
using AssignmentsFor = std::function<std::vector<Assignment>(const Printer&)>;

// Works out the changes of every chosen printer, writes them to the journal, stores and reports
// them. The journal is locked from the first read on: no other program can change the settings
// between the read and the write. Stores nothing when the journal cannot be written. Throws a
// Failure without text when a printer failed.
void RunChanges(const PrinterChoice& choice, const AssignmentsFor& assignments,
                const RunOptions& options);

// Stores the changes. When one printer fails, the next one follows. The journal, if there is one,
// gets all changes before the first is stored, so that a killed program leaves nothing that cannot
// be undone. A request to stop (Ctrl+C) takes effect between two printers. Afterwards `fields` hold
// the values that the drivers stored.
RunResult MakeChanges(std::vector<PrinterChange>& changes, Journal* journal,
                      std::uint64_t undoes = 0);

}  // namespace qv
