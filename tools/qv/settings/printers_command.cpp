// qv printers: lists the installed printers.
#include <CLI/CLI.hpp>
#include <memory>

#include "base/json_output.h"
#include "base/table.h"
#include "settings/printer_choice.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

struct PrintersOptions {
    PrinterChoice choice;
    bool json = false;
    bool table = false;
};

void ListPrinters(PrintersOptions& options) {
    // Without a choice, or with a pattern, printers of other drivers are listed too.
    options.choice.force = !options.choice.all;
    std::vector<Printer> printers = options.choice.IsMany()
                                        ? ChoosePrinters(options.choice, Purpose::kLook)
                                        : InstalledPrinters();
    if (options.json) {
        Json list = Json::array();
        for (const Printer& p : printers) {
            list.push_back({{"name", Text(p.name)},
                            {"driver", Text(p.driver)},
                            {"port", Text(p.port)},
                            {"product", p.IsProduct()}});
        }
        return PrintJson({{"scope", kScope}, {"printers", list}});
    }
    Table table({"PRINTER", "DRIVER", "PORT"});
    for (const Printer& p : printers)
        table.Add({OneLine(p.name), OneLine(p.driver), OneLine(p.port)});
    table.Print(options.table);
}

}  // namespace

void AddPrintersCommand(CLI::App& app) {
    auto options = std::make_shared<PrintersOptions>();
    CLI::App* printers =
        app.add_subcommand("printers", "List the installed printers: name, driver, port");
    AddChoiceOptions(*printers, options->choice);
    AddTableOption(*printers, options->table);
    printers->add_flag("--json", options->json, "One JSON document");
    printers->callback([options] { ListPrinters(*options); });
}

}  // namespace qv
