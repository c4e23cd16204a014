// qv lint: finds errors in settings.
#include <CLI/CLI.hpp>
#include <memory>

#include "base/value_text.h"
#include "settings/field_json.h"
#include "settings/field_meaning.h"
#include "settings/printer_look.h"
#include "settings/settings_commands.h"
#include "settings/settings_source.h"

namespace qv {

namespace {

struct Finding {
    int line;           // in a text form; 0 otherwise
    std::string field;  // empty when it concerns the whole block
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

Json FindingsJson(const std::vector<Finding>& findings) {
    Json list = Json::array();
    for (const Finding& f : findings) {
        Json object = Json::object();
        if (f.line != 0) object["line"] = f.line;
        if (!f.field.empty()) object["field"] = f.field;
        object["text"] = f.text;
        list.push_back(object);
    }
    return list;
}

// Collects the findings of all sources and ends the command accordingly.
class Linter {
  public:
    explicit Linter(bool is_many) : is_many_(is_many) {}

    void Take(const SettingsSource& source) {
        const std::vector<Finding> findings = Findings(source);
        list_.push_back({{"source", source.Description()},
                         {"damaged", !source.damage.empty()},
                         {"findings", FindingsJson(findings)}});
        const std::string prefix = is_many_ ? OneLine(FromUtf8(source.name)) + ": " : "";
        for (const Finding& f : findings) lines_ += prefix + LinePrefix(f.line) + f.text + "\n";
        damaged_ = damaged_ || !source.damage.empty();
        found_ = found_ || !findings.empty();
    }

    // The printer's settings cannot be read.
    void Take(const Printer& printer, const Failure& failure) {
        list_.push_back({{"source", {{"printer", Text(printer.name)}}}, {"error", failure.what()}});
        errors_.emplace_back(failure.what());
    }

    void Finish(bool as_json) const {
        if (as_json) {
            Json document = {{"scope", kScope}};
            document.update(is_many_ ? Json{{"printers", list_}} : list_.front());
            PrintJson(document);
        } else {
            PrintScope();
            Print(lines_);
        }
        for (const std::string& error : errors_) PrintError(error);
        if (damaged_) throw Failure("", ExitCode::kDamaged);
        if (found_ || !errors_.empty()) throw Failure("");
    }

  private:
    bool is_many_;
    Json list_ = Json::array();
    std::string lines_;
    std::vector<std::string> errors_;
    bool damaged_ = false, found_ = false;
};

struct LintOptions {
    std::string source;
    PrinterChoice choice;
    bool json = false;
};

void Lint(const LintOptions& options) {
    const bool is_many = options.choice.IsMany();
    if (is_many != options.source.empty())
        throw CLI::ValidationError("PRINTER|FILE", "either it or --all, --match or --names");
    Linter linter(is_many);
    if (is_many) {
        EachPrinter(options.choice, [&linter](const Printer& printer) {
            try {
                linter.Take(SourceOfPrinter(printer));
            } catch (const Failure& failure) {
                linter.Take(printer, failure);
            }
        });
    } else {
        linter.Take(OpenSource(options.source));
    }
    linter.Finish(options.json);
}

}  // namespace

void AddLintCommand(CLI::App& app) {
    auto options = std::make_shared<LintOptions>();
    CLI::App* command = app.add_subcommand(
        "lint",
        "Find values without meaning or effect; the exit code is 1 on findings, 3 on damage");
    command->add_option("PRINTER|FILE", options->source,
                        "A printer's name, a file of `qv export`, or a file with a settings block");
    AddChoiceOptions(*command, options->choice);
    command->add_flag("--json", options->json, "One JSON document");
    command->callback([options] { Lint(*options); });
}

}  // namespace qv
