// The tool's commands. Each adds its own subcommand, with options and help, to the command line.
#pragma once

#include <CLI/CLI.hpp>

namespace qv {

void AddXmlCommand(CLI::App& app);
void AddTextCommand(CLI::App& app);
void AddPrinterCommands(CLI::App& app);
void AddCatalogueCommands(CLI::App& app);
void AddBlockCommands(CLI::App& app);
void AddLogCommands(CLI::App& app);
void AddEventCommands(CLI::App& app);
void AddDoctorCommands(CLI::App& app);
void AddReportCommands(CLI::App& app);
// Describes the commands that were added before it, for shells and manuals. Add it last.
void AddCompletionCommands(CLI::App& app);
// Commands that only this host has. None on Windows.
void AddHostCommands(CLI::App& app);

}  // namespace qv
