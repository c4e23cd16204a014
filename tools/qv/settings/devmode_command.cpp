// qv devmode: settings blocks byte for byte.
#include <CLI/CLI.hpp>
#include <memory>

#include "settings/block_damage.h"
#include "settings/field_json.h"
#include "settings/settings_commands.h"
#include "settings/settings_source.h"

namespace qv {

namespace {

void PrintBlock(const SettingsSource& source, const std::vector<std::string>& complaints,
                bool as_json) {
    if (!as_json) {
        if (source.kind == SettingsSource::Kind::kPrinter) PrintScope();
        // Any block is shown, also a short one or one of another driver.
        return PrintLine(ToUtf8(TQVDM(&source.block.Block()).ToString(TEXT("\n"), 0)));
    }
    Json fields = Json::object();
    for (const Field* field : AllFields())
        if (source.Has(*field))
            fields[NameOf(*field)] = FieldJson(*field, source.block.Get(*field));
    Json document = {{"source", source.Description()},
                     {"size", source.block.Size()},
                     {"valid", complaints.empty()},
                     {"fields", fields},
                     {"complaints", complaints}};
    if (source.kind == SettingsSource::Kind::kPrinter) document["scope"] = kScope;
    PrintJson(document);
}

void ShowBlock(const std::string& name, bool as_json) {
    const SettingsSource source = OpenSource(name);
    if (source.kind == SettingsSource::Kind::kText)
        throw Failure(Quoted(name) + " is text, not a block", ExitCode::kDamaged);
    const std::vector<std::string> complaints = ProductDamage(source.block);
    PrintBlock(source, complaints, as_json);
    for (const std::string& complaint : complaints) PrintError(complaint);
    if (!complaints.empty()) throw Failure("", ExitCode::kDamaged);
}

}  // namespace

void AddDevmodeCommand(CLI::App& app) {
    auto name = std::make_shared<std::string>();
    auto as_json = std::make_shared<bool>(false);
    CLI::App* devmode = app.add_subcommand("devmode", "Look at settings blocks");
    devmode->require_subcommand(1);
    CLI::App* show =
        devmode->add_subcommand("show", "Show every field by name, and faults of the block");
    show->add_option("FILE|PRINTER", *name, "A file that holds a block, or a printer's name")
        ->required();
    show->add_flag("--json", *as_json, "One JSON document");
    show->callback([name, as_json] { ShowBlock(*name, *as_json); });
}

}  // namespace qv
