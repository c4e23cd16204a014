// qv diff: compares two settings field by field.
#include <CLI/CLI.hpp>
#include <memory>

#include "settings/changes.h"
#include "settings/field_json.h"
#include "settings/printer_look.h"
#include "settings/settings_commands.h"
#include "settings/settings_source.h"

namespace qv {

namespace {

struct DiffOptions {
    std::string a, b;
    PrinterChoice choice;
    bool common = false;
    bool json = false;
};

struct Difference {
    const Field* field;
    std::optional<UnicodeString> a, b;  // nullopt when this side does not have the field
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

Json DifferencesJson(const std::vector<Difference>& differences) {
    Json list = Json::array();
    for (const Difference& d : differences) {
        list.push_back({{"name", NameOf(*d.field)},
                        {"a", SideJson(*d.field, d.a)},
                        {"b", SideJson(*d.field, d.b)}});
    }
    return list;
}

std::string DifferenceLines(const std::string& prefix, const std::vector<Difference>& differences) {
    std::string lines;
    for (const Difference& d : differences)
        lines += prefix + NameOf(*d.field) + ": " + Shown(d.a) + " -> " + Shown(d.b) + "\n";
    return lines;
}

// Reports damage that keeps fields from being compared. The other fields are still compared.
std::vector<std::string> DamageOf(const SettingsSource& source) {
    const std::string name = Quoted(source.name) + ": ";
    std::vector<std::string> texts;
    for (const LineFault& fault : source.faults)
        texts.push_back(name + LinePrefix(fault.line) + fault.text);
    for (const std::string& reason : source.damage) texts.push_back(name + reason);
    return texts;
}

// The result of comparing with one or many printers.
struct Outcome {
    std::vector<std::string> damage, errors;
    bool differ = false;

    void AddDamage(const SettingsSource& source) {
        const auto texts = DamageOf(source);
        damage.insert(damage.end(), texts.begin(), texts.end());
    }
    void Report() const {
        for (const std::string& text : damage) PrintError(text);
        for (const std::string& text : errors) PrintError(text);
        if (!damage.empty()) throw Failure("", ExitCode::kDamaged);
        if (differ || !errors.empty()) throw Failure("");
    }
};

void DiffTwo(const DiffOptions& options) {
    const SettingsSource a = OpenSource(options.a);
    const SettingsSource b = OpenSource(options.b);
    const auto differences = Compare(a, b, options.common);
    if (options.json) {
        PrintJson({{"scope", kScope},
                   {"a", a.Description()},
                   {"b", b.Description()},
                   {"same", differences.empty()},
                   {"differences", DifferencesJson(differences)}});
    } else {
        PrintScope();
        Print(DifferenceLines("", differences));
    }
    Outcome outcome;
    outcome.AddDamage(a);
    outcome.AddDamage(b);
    outcome.differ = !differences.empty();
    outcome.Report();
}

// Compares A with each chosen printer.
void DiffMany(const DiffOptions& options) {
    const SettingsSource a = OpenSource(options.a);
    Json list = Json::array();
    std::string lines;
    Outcome outcome;
    outcome.AddDamage(a);
    EachPrinter(options.choice, [&](const Printer& printer) {
        Json entry = {{"printer", Text(printer.name)}};
        try {
            const SettingsSource b = SourceOfPrinter(printer);
            const auto differences = Compare(a, b, options.common);
            lines += DifferenceLines(OneLine(printer.name) + ": ", differences);
            entry["same"] = differences.empty();
            entry["differences"] = DifferencesJson(differences);
            outcome.differ = outcome.differ || !differences.empty();
            outcome.AddDamage(b);
        } catch (const Failure& failure) {
            outcome.errors.emplace_back(failure.what());
            entry["error"] = failure.what();
        }
        list.push_back(entry);
    });
    if (options.json) {
        PrintJson({{"scope", kScope}, {"a", a.Description()}, {"printers", list}});
    } else {
        PrintScope();
        Print(lines);
    }
    outcome.Report();
}

void Diff(const DiffOptions& options) {
    if (options.choice.IsMany() != options.b.empty())
        throw CLI::ValidationError("B", "either it or --all, --match or --names");
    return options.choice.IsMany() ? DiffMany(options) : DiffTwo(options);
}

}  // namespace

void AddDiffCommand(CLI::App& app) {
    auto options = std::make_shared<DiffOptions>();
    CLI::App* command =
        app.add_subcommand("diff", "Compare settings; the exit code is 1 when they differ");
    const char* const side =
        "A file of `qv export`, a file with a settings block, or a printer's name";
    command->add_option("A", options->a, side)->required();
    command->add_option("B", options->b,
                        "A second file or printer; not with --all, --match or --names");
    AddChoiceOptions(*command, options->choice);
    command->add_flag("--common", options->common, "Only fields that both sides have");
    command->add_flag("--json", options->json, "One JSON document");
    command->callback([options] { Diff(*options); });
}

}  // namespace qv
