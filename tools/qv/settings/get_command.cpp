// qv get: shows the current user's settings of one printer or of many.
#include <CLI/CLI.hpp>
#include <memory>

#include "base/table.h"
#include "settings/changes.h"
#include "settings/field_json.h"
#include "settings/printer_look.h"
#include "settings/settings_commands.h"

namespace qv {

namespace {

struct GetOptions {
    PrinterChoice choice;
    std::vector<std::string> words;
    bool json = false;
    bool table = false;
};

using Fields = std::vector<const Field*>;

// Reports all unknown names in one message.
Fields FieldsNamed(const std::vector<std::string>& names) {
    Fields fields;
    std::string faults;
    for (const std::string& name : names) {
        try {
            fields.push_back(&RequireField(name));
        } catch (const Failure& failure) {
            faults += (faults.empty() ? "" : "\nqv: ") + std::string(failure.what());
        }
    }
    if (!faults.empty()) throw Failure(faults);
    return fields;
}

// The requested fields that the block has. Without a request: all fields but those that describe
// the block itself, or these when there are no others.
Fields ToShow(const SettingsBlock& block, const Fields& asked) {
    Fields fields;
    for (const Field* field : asked.empty() ? AllFields() : asked) {
        const bool is_shown = !asked.empty() || field->Listed || !block.IsProduct();
        if (is_shown && block.Has(*field)) fields.push_back(field);
    }
    return fields;
}

Json LookJson(const PrinterLook& look, const Fields& asked) {
    Json object = {{"printer", Text(look.printer.name)}, {"driver", Text(look.printer.driver)}};
    if (!look.block) {
        object["error"] = look.error;
        return object;
    }
    Json fields = Json::object();
    for (const Field* field : ToShow(*look.block, asked))
        fields[NameOf(*field)] = FieldJson(*field, look.block->Get(*field));
    object["product"] = look.block->IsProduct();
    object["fields"] = fields;
    return object;
}

void PrintOne(const PrinterLook& look, const Fields& asked, const GetOptions& options) {
    for (const Field* field : asked) {
        if (look.block->Has(*field)) continue;
        throw Failure("the settings of '" + OneLine(look.printer.name) + "' have no field '" +
                      NameOf(*field) + "'");
    }
    if (options.json) {
        Json document = {{"scope", kScope}};
        document.update(LookJson(look, asked));
        return PrintJson(document);
    }
    for (const Field* field : ToShow(*look.block, asked))
        PrintLine(NameOf(*field) + "=" + OneLine(look.block->Get(*field)));
    PrintScope();
}

// With requested fields: one column for each, "-" where a printer does not have it. Otherwise one
// row for each field.
class Collector {
  public:
    explicit Collector(const Fields& asked) : asked_(asked), table_(Head(asked)) {}

    void Take(const PrinterLook& look) {
        list_.push_back(LookJson(look, asked_));
        const std::string name = OneLine(look.printer.name);
        if (!look.block) return;
        if (!asked_.empty()) return table_.Add(RowOf(name, *look.block));
        for (const Field* field : ToShow(*look.block, asked_))
            table_.Add({name, NameOf(*field), Shown(look.block->Get(*field))});
    }

    void Print(const GetOptions& options) const {
        if (options.json) return PrintJson({{"scope", kScope}, {"printers", list_}});
        table_.Print(options.table);
        PrintScope();
    }

  private:
    static std::vector<std::string> Head(const Fields& asked) {
        if (asked.empty()) return {"PRINTER", "FIELD", "VALUE"};
        std::vector<std::string> head = {"PRINTER"};
        for (const Field* field : asked) head.push_back(NameOf(*field));
        return head;
    }
    std::vector<std::string> RowOf(const std::string& name, const SettingsBlock& block) const {
        std::vector<std::string> row = {name};
        for (const Field* field : asked_)
            row.push_back(block.Has(*field) ? Shown(block.Get(*field)) : "-");
        return row;
    }

    const Fields& asked_;
    Table table_;
    Json list_ = Json::array();
};

void Get(GetOptions& options) {
    TakePrinter(options.choice, options.words);
    const Fields asked = FieldsNamed(options.words);
    const bool is_many = options.choice.IsMany();
    Collector collector(asked);
    LookFaults faults;
    LookAtPrinters(options.choice, [&](const PrinterLook& look) {
        faults.Add(look, is_many);
        if (is_many) return collector.Take(look);
        PrintOne(look, asked, options);
    });
    if (is_many) collector.Print(options);
    faults.Report();
}

}  // namespace

void AddGetCommand(CLI::App& app) {
    auto options = std::make_shared<GetOptions>();
    CLI::App* get =
        app.add_subcommand("get", "Show the current user's settings of one printer or of many");
    get->footer(
        "The first word is the printer's name unless --all, --match or --names choose\n"
        "printers; the others are fields. Examples:\n"
        "  qv get \"Vantrel Fax\" dmCopies exOut.FileName\n"
        "  qv get --all --table dmCopies exOut.FileName");
    get->add_option("FIELD", options->words,
                    "The printer, and the fields; without a field, all of them")
        ->type_name("[PRINTER] [FIELD]...");
    AddChoiceOptions(*get, options->choice);
    AddTableOption(*get, options->table);
    get->add_flag("--json", options->json, "One JSON document");
    get->callback([options] { Get(*options); });
}

}  // namespace qv
