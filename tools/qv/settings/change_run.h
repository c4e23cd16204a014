// How a command that changes settings runs: in the journal first, then printer by printer.
#pragma once

#include <functional>

#include "settings/changes.h"
#include "settings/printer_choice.h"

namespace qv {

struct RunOptions {
    ReportOptions report;
    bool no_undo = false;
};
void AddRunOptions(CLI::App& command, RunOptions& options);

// What a printer is to be given.
using AssignmentsFor = std::function<std::vector<Assignment>(const Printer&)>;

// Works out the changes of every printer chosen, keeps them in the journal under the command's
// name, stores and reports them. The journal is held from the first printer on, so that of two
// programs none writes back what it read before the other's change. Nothing is stored when the
// journal cannot be written. Throws a Failure without text when a printer failed.
void RunChanges(const std::string& command, const PrinterChoice& choice,
                const AssignmentsFor& assignments, const RunOptions& options);

}  // namespace qv
