// qv printers, qv get: the installed printers, and the current user's settings of one.
#include <CLI/CLI.hpp>
#include <memory>

#include "settings/block_damage.h"
#include "settings/field_json.h"
#include "settings/printer_settings.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

void ListPrinters(bool as_json) {
    const std::vector<Printer> printers = InstalledPrinters();
    if (as_json) {
        Json list = Json::array();
        for (const Printer& p : printers) {
            list.push_back({{"name", Text(p.name)},
                            {"driver", Text(p.driver)},
                            {"port", Text(p.port)},
                            {"product", p.IsProduct()}});
        }
        return PrintJson({{"scope", kScope}, {"printers", list}});
    }
    for (const Printer& p : printers)
        PrintLine(OneLine(p.name) + "\t" + OneLine(p.driver) + "\t" + OneLine(p.port));
}

// The fields that are for users: not what describes the block itself, unless that is all there is.
bool IsShown(const Field& field, const SettingsBlock& block) {
    return block.Has(field) && (field.Listed || !block.IsProduct());
}

void PrintFields(const SettingsBlock& block, const Printer& printer, bool as_json) {
    Json fields = Json::object();
    for (const Field* field : AllFields()) {
        if (!IsShown(*field, block)) continue;
        if (as_json) {
            fields[NameOf(*field)] = FieldJson(*field, block.Get(*field));
        } else {
            PrintLine(NameOf(*field) + "=" + OneLine(block.Get(*field)));
        }
    }
    if (!as_json) return PrintScope();
    PrintJson({{"scope", kScope},
               {"printer", Text(printer.name)},
               {"driver", Text(printer.driver)},
               {"product", block.IsProduct()},
               {"fields", fields}});
}

void GetSettings(const std::string& name, bool as_json) {
    const Printer printer = FindPrinter(FromUtf8(name));
    const SettingsBlock block = RequireUserSettings(printer.name);
    PrintFields(block, printer, as_json);
    const auto damage = printer.IsProduct() ? ProductDamage(block) : SizeDamage(block);
    for (const std::string& reason : damage) PrintError(reason);
    if (!damage.empty()) throw Failure("", ExitCode::kDamaged);
}

}  // namespace

void AddPrintersCommand(CLI::App& app) {
    auto as_json = std::make_shared<bool>(false);
    CLI::App* printers =
        app.add_subcommand("printers", "List the installed printers: name, driver, port");
    printers->add_flag("--json", *as_json, "One JSON document");
    printers->callback([as_json] { ListPrinters(*as_json); });
}

void AddGetCommand(CLI::App& app) {
    auto name = std::make_shared<std::string>();
    auto as_json = std::make_shared<bool>(false);
    CLI::App* get = app.add_subcommand("get", "Show the current user's settings of a printer");
    get->add_option("PRINTER", *name, "The printer's name")->required();
    get->add_flag("--json", *as_json, "One JSON document");
    get->callback([name, as_json] { GetSettings(*name, *as_json); });
}

}  // namespace qv
