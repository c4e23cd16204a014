// How a command that changes settings runs: in the journal first, then printer by printer.
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

// Works out the changes of every printer chosen, keeps them in the journal, stores and reports
// them. The journal is held from the first printer on, so that of two programs none writes back
// what it read before the other's change. Nothing is stored when the journal cannot be written.
// Throws a Failure without text when a printer failed.
void RunChanges(const PrinterChoice& choice, const AssignmentsFor& assignments,
                const RunOptions& options);

// Stores the changes that are to be stored, and goes on with the next printer when one fails. They
// stand in the journal, if there is one, before the first is stored: a program that ends in the
// middle leaves nothing that cannot be taken back. Whoever asks the program to stop is obeyed
// between two printers. `fields` then say what the drivers made of each.
RunResult MakeChanges(std::vector<PrinterChange>& changes, Journal* journal,
                      std::uint64_t undoes = 0);

}  // namespace qv
