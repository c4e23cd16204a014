// How a command that changes settings runs: in the journal first, then printer by printer.
#pragma once

#include <functional>

#include "settings/changes.h"

namespace qv {

struct RunOptions {
    ReportOptions report;
    bool no_undo = false;
};
void AddRunOptions(CLI::App& command, RunOptions& options);

using ChangePlan = std::function<std::vector<PrinterChange>()>;

// Makes the plan, keeps the changes in the journal under the command's name, stores and reports
// them. The journal is held from the plan on, so that of two programs none writes back what it read
// before the other's change. Nothing is stored when the journal cannot be written. Throws a Failure
// without text when a printer failed.
void RunChanges(const std::string& command, const ChangePlan& plan, const RunOptions& options);

}  // namespace qv
