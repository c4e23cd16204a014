// qv papers, qv resolutions: list the papers and resolutions of the product's resource file.
#include <charconv>
#include <memory>

#include "base/commands.h"
#include "base/console.h"
#include "driver_global/catalogues.h"
#include "xml/xml_resource.h"

namespace qv {

namespace {

struct CatalogueOptions {
    std::string list, set = "standard", language, fit;
};

void AddOptions(CLI::App& command, CatalogueOptions& options) {
    command.add_option("--set", options.set, "The set of options")->capture_default_str();
    command.add_option("--list", options.list, "The list's name in the resource file")
        ->capture_default_str();
    command.add_option("--language", options.language,
                       "Language code of the texts; the default is the product's");
}

void Open(TQVSizes& catalogue, const CatalogueOptions& options) {
    const UnicodeString language =
        options.language.empty() ? GetLanguage() : FromUtf8(options.language);
    if (!catalogue.Open(FromUtf8(options.list), language, FromUtf8(options.set)) ||
        !catalogue.ReadData()) {
        throw Failure("the resource file has no list " + Quoted(options.list) + " for the set " +
                      Quoted(options.set));
    }
}

std::string Line(const TQVSizeData& entry, bool is_default) {
    return std::string(is_default ? "* " : "  ") + OneLine(entry.Name) + "\t" +
           std::to_string(entry.X) + " x " + std::to_string(entry.Y) + "\t" + OneLine(entry.Text);
}

void ParseSize(const std::string& text, int& width, int& height) {
    const char* const end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, width);
    const bool crossed = first.ec == std::errc() && first.ptr != end && *first.ptr == 'x';
    const auto second = crossed ? std::from_chars(first.ptr + 1, end, height) : first;
    if (!crossed || second.ec != std::errc() || second.ptr != end) {
        throw CLI::ValidationError("--fit", Quoted(text) + " is not of the form WIDTHxHEIGHT");
    }
}

void ShowPapers(const CatalogueOptions& options) {
    TQVPapers papers;
    Open(papers, options);
    if (!options.fit.empty()) {
        int width = 0;
        int height = 0;
        ParseSize(options.fit, width, height);
        const int best = papers.IndexOfBestFit(width, height);
        PrintLine(Line(*papers.Get(best), best == papers.GetDefaultIndex()));
        return;
    }
    for (int i = 0; i < papers.GetCount(); ++i) {
        PrintLine(Line(*papers.Get(i), i == papers.GetDefaultIndex()) + "\tid " +
                  std::to_string(papers.Get(i)->Id));
    }
}

void ShowResolutions(const CatalogueOptions& options) {
    TQVResolutions resolutions;
    Open(resolutions, options);
    for (int i = 0; i < resolutions.GetCount(); ++i) {
        PrintLine(Line(*resolutions.Get(i), i == resolutions.GetDefaultIndex()));
    }
}

}  // namespace

void AddCatalogueCommands(CLI::App& app) {
    auto papers = std::make_shared<CatalogueOptions>();
    papers->list = "papers";
    CLI::App* command = app.add_subcommand("papers", "List the fax papers; * marks the default");
    AddOptions(*command, *papers);
    command->add_option(
        "--fit", papers->fit,
        "Show only the best paper for a page, WIDTHxHEIGHT in tenths of a millimetre");
    command->callback([papers] { ShowPapers(*papers); });

    auto resolutions = std::make_shared<CatalogueOptions>();
    resolutions->list = "resolutions";
    command = app.add_subcommand("resolutions", "List the fax resolutions; * marks the default");
    AddOptions(*command, *resolutions);
    command->callback([resolutions] { ShowResolutions(*resolutions); });
}

}  // namespace qv
