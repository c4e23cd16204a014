// How a command that changes settings runs: in the journal first, then printer by printer.
#pragma once

#include "settings/changes.h"

namespace qv {

struct RunOptions {
    ReportOptions report;
    bool no_undo = false;
};
void AddRunOptions(CLI::App& command, RunOptions& options);

// Keeps the changes in the journal under the command's name, stores and reports them. Nothing is
// stored when the journal cannot be written. Throws a Failure without text when a printer failed.
void RunChanges(const std::string& command, std::vector<PrinterChange> changes,
                const RunOptions& options);

}  // namespace qv
