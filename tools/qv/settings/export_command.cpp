// qv export: a printer's settings as text.
#include <CLI/CLI.hpp>
#include <memory>

#include "base/files.h"
#include "os_xp/user_name.h"
#include "settings/block_damage.h"
#include "settings/printer_settings.h"
#include "settings/settings_commands.h"
#include "settings/settings_text.h"

namespace qv {

namespace {

void Export(const std::string& name, const std::string& file) {
    const Printer printer = FindPrinter(FromUtf8(name));
    const SettingsBlock block = RequireUserSettings(printer.name);
    WriteAll(file, FormatSettings({printer.name, printer.driver, ::GetUserNameW(true)}, block));
    PrintScope();
    const auto damage = printer.IsProduct() ? ProductDamage(block) : SizeDamage(block);
    for (const std::string& reason : damage) PrintError(reason);
    if (!damage.empty()) throw Failure("", ExitCode::kDamaged);
}

}  // namespace

void AddExportCommand(CLI::App& app) {
    auto printer = std::make_shared<std::string>();
    auto file = std::make_shared<std::string>(kStandardStream);
    CLI::App* command =
        app.add_subcommand("export", "Write the current user's settings of a printer as text");
    command->add_option("PRINTER", *printer, "The printer's name")->required();
    command->add_option("FILE", *file, "The file to write; - is standard output, the default");
    command->callback([printer, file] { Export(*printer, *file); });
}

}  // namespace qv
