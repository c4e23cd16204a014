// qv lint: what is wrong with settings.
#include <CLI/CLI.hpp>
#include <memory>

#include "base/value_text.h"
#include "settings/field_json.h"
#include "settings/field_meaning.h"
#include "settings/settings_commands.h"
#include "settings/settings_source.h"

namespace qv {

namespace {

struct Finding {
    int line;           // of a text form; 0 otherwise
    std::string field;  // empty for the whole
    std::string text;
};

std::vector<Finding> Findings(const SettingsSource& source) {
    std::vector<Finding> findings;
    for (const std::string& reason : source.damage) findings.push_back({0, "", reason});
    for (const LineFault& fault : source.faults)
        findings.push_back({fault.line, fault.field, fault.text});
    for (const Field* field : AllFields()) {
        if (!source.Has(*field)) continue;
        const std::string reason = MeaningFault(source.block, *field);
        if (reason.empty()) continue;
        findings.push_back(
            {source.LineOf(*field), NameOf(*field),
             NameOf(*field) + "=" + ToValueText(source.block.Get(*field)) + ": " + reason});
    }
    std::ranges::stable_sort(findings, {}, &Finding::line);
    return findings;
}

void PrintFindings(const SettingsSource& source, const std::vector<Finding>& findings,
                   bool as_json) {
    if (!as_json) {
        PrintScope();
        for (const Finding& f : findings) PrintLine(LinePrefix(f.line) + f.text);
        return;
    }
    Json list = Json::array();
    for (const Finding& f : findings) {
        Json object = Json::object();
        if (f.line != 0) object["line"] = f.line;
        if (!f.field.empty()) object["field"] = f.field;
        object["text"] = f.text;
        list.push_back(object);
    }
    PrintJson({{"scope", kScope},
               {"source", source.Description()},
               {"damaged", !source.damage.empty()},
               {"findings", list}});
}

void Lint(const std::string& name, bool as_json) {
    const SettingsSource source = OpenSource(name);
    const std::vector<Finding> findings = Findings(source);
    PrintFindings(source, findings, as_json);
    if (!source.damage.empty()) throw Failure("", ExitCode::kDamaged);
    if (!findings.empty()) throw Failure("");
}

}  // namespace

void AddLintCommand(CLI::App& app) {
    auto name = std::make_shared<std::string>();
    auto as_json = std::make_shared<bool>(false);
    CLI::App* command = app.add_subcommand(
        "lint", "Find values without meaning or effect; ends with 1 on findings, 3 on damage");
    command
        ->add_option("PRINTER|FILE", *name,
                     "A printer's name, or a file (what `qv export` wrote, or a block)")
        ->required();
    command->add_flag("--json", *as_json, "One JSON document");
    command->callback([name, as_json] { Lint(*name, *as_json); });
}

}  // namespace qv
