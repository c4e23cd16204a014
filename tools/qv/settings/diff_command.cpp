// qv diff: two settings field by field.
#include <CLI/CLI.hpp>
#include <memory>

#include "settings/changes.h"
#include "settings/field_json.h"
#include "settings/settings_commands.h"
#include "settings/settings_source.h"

namespace qv {

namespace {

struct DiffOptions {
    std::string a, b;
    bool common = false;
    bool json = false;
};

struct Difference {
    const Field* field;
    std::optional<UnicodeString> a, b;  // nothing where a side lacks the field
};

std::optional<UnicodeString> ValueIn(const SettingsSource& source, const Field& field) {
    if (!source.Has(field)) return {};
    return source.block.Get(field);
}

std::vector<Difference> Compare(const SettingsSource& a, const SettingsSource& b, bool common) {
    std::vector<Difference> differences;
    for (const Field* field : AllFields()) {
        Difference d = {field, ValueIn(a, *field), ValueIn(b, *field)};
        const bool is_one_sided = d.a.has_value() != d.b.has_value();
        if (is_one_sided ? !common : d.a != d.b) differences.push_back(std::move(d));
    }
    return differences;
}

Json SideJson(const Field& field, const std::optional<UnicodeString>& value) {
    return value ? FieldJson(field, *value) : Json();
}

std::string SideText(const std::optional<UnicodeString>& value) {
    return value ? Shown(*value) : "(none)";
}

void Print(const SettingsSource& a, const SettingsSource& b,
           const std::vector<Difference>& differences, bool as_json) {
    if (!as_json) {
        PrintScope();
        for (const Difference& d : differences)
            PrintLine(NameOf(*d.field) + ": " + SideText(d.a) + " -> " + SideText(d.b));
        return;
    }
    Json list = Json::array();
    for (const Difference& d : differences) {
        list.push_back({{"name", NameOf(*d.field)},
                        {"a", SideJson(*d.field, d.a)},
                        {"b", SideJson(*d.field, d.b)}});
    }
    PrintJson({{"scope", kScope},
               {"a", a.Description()},
               {"b", b.Description()},
               {"same", differences.empty()},
               {"differences", list}});
}

// What cannot be compared is said; the rest is compared all the same.
bool ReportDamage(const SettingsSource& source) {
    const std::string name = "'" + source.name + "': ";
    for (const LineFault& fault : source.faults)
        PrintError(name + LinePrefix(fault.line) + fault.text);
    for (const std::string& reason : source.damage) PrintError(name + reason);
    return !source.faults.empty() || !source.damage.empty();
}

void Diff(const DiffOptions& options) {
    const SettingsSource a = OpenSource(options.a);
    const SettingsSource b = OpenSource(options.b);
    const auto differences = Compare(a, b, options.common);
    Print(a, b, differences, options.json);
    const bool a_damaged = ReportDamage(a);
    const bool b_damaged = ReportDamage(b);
    if (a_damaged || b_damaged) throw Failure("", ExitCode::kDamaged);
    if (!differences.empty()) throw Failure("");
}

}  // namespace

void AddDiffCommand(CLI::App& app) {
    auto options = std::make_shared<DiffOptions>();
    CLI::App* command =
        app.add_subcommand("diff", "Compare two settings; ends with 1 when they differ");
    const char* const side = "A file (what `qv export` wrote, or a block), or a printer's name";
    command->add_option("A", options->a, side)->required();
    command->add_option("B", options->b, side)->required();
    command->add_flag("--common", options->common, "Only fields that both have");
    command->add_flag("--json", options->json, "One JSON document");
    command->callback([options] { Diff(*options); });
}

}  // namespace qv
