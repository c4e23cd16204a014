#include "settings/settings_commands.h"

#include "base/commands.h"

namespace qv {

void AddPrinterCommands(CLI::App& app) {
    AddPrintersCommand(app);
    AddGetCommand(app);
    AddSetCommand(app);
    AddUndoCommand(app);
    AddAuditCommand(app);
    AddExportCommand(app);
    AddApplyCommand(app);
    AddDiffCommand(app);
    AddCheckCommand(app);
    AddLintCommand(app);
}

void AddBlockCommands(CLI::App& app) {
    AddDevmodeCommand(app);
    AddJobCommands(app);
    AddDefaultsCommand(app);
}

}  // namespace qv
