// The commands over settings; each adds its own subcommand.
#pragma once

namespace CLI {
class App;
}

namespace qv {

void AddPrintersCommand(CLI::App& app);
void AddGetCommand(CLI::App& app);
void AddSetCommand(CLI::App& app);
void AddExportCommand(CLI::App& app);
void AddApplyCommand(CLI::App& app);
void AddDiffCommand(CLI::App& app);
void AddUndoCommand(CLI::App& app);
void AddAuditCommand(CLI::App& app);
void AddCheckCommand(CLI::App& app);
void AddLintCommand(CLI::App& app);
void AddDefaultsCommand(CLI::App& app);
void AddDevmodeCommand(CLI::App& app);
void AddJobCommands(CLI::App& app);

}  // namespace qv
