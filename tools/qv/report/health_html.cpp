#include "report/health_html.h"

#include <algorithm>
#include <functional>
#include <map>

#include "report/html.h"

namespace qv {

namespace {

// A list longer than this is folded.
constexpr std::size_t kMostOpen = 12;

std::string ValueText(const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    if (!value.is_array()) return value.is_null() ? std::string() : value.dump();
    std::string lines;
    for (const Json& item : value) lines += (lines.empty() ? "" : "\n") + ValueText(item);
    return lines;
}

std::string Card(const std::string& title, const Json& section) {
    std::string html = "<section class=\"card\">" + Element("h3", title) + "<dl>\n";
    for (const auto& item : section.items()) {
        html += Element("dt", item.key()) + Element("dd", ValueText(item.value())) + "\n";
    }
    return html + "</dl></section>\n";
}

std::string TextOf(const Json& object, const char* key) {
    return object.contains(key) ? ValueText(object.at(key)) : std::string();
}

std::string Folded(const std::string& summary, const std::string& html, bool open) {
    return std::string(open ? "<details open>" : "<details>") + Element("summary", summary) + html +
           "</details>\n";
}

std::string RegistryHtml(const Json& entries) {
    HtmlTable table{"The product's values in force", {"Name", "Value", "From", "Key"}, {}};
    for (const Json& entry : entries) {
        table.rows.push_back({TextOf(entry, "name"), TextOf(entry, "value"), TextOf(entry, "from"),
                              TextOf(entry, "key")});
    }
    return Folded("Registry: " + Counted(entries.size(), "value"), ToHtml(table), false);
}

std::string StateText(const PrinterContents& printer) {
    std::string text = printer.state;
    if (text == "none") text = "none: printing uses the defaults";
    for (const std::string& reason : printer.reasons) text += "\n" + reason;
    return text;
}

std::string DifferText(const PrinterContents& printer) {
    return printer.differences ? std::to_string(printer.differences->size()) : std::string("-");
}

std::string PrinterTable(const std::vector<PrinterContents>& printers) {
    HtmlTable table{"Settings are those of the current user",
                    {"Printer", "Driver", "Port", "Settings", "Differ from defaults"},
                    {}};
    for (const PrinterContents& printer : printers) {
        table.rows.push_back(
            {printer.name, printer.driver, printer.port, StateText(printer), DifferText(printer)});
    }
    return Folded(Counted(printers.size(), "printer"), ToHtml(table), true);
}

using Group = std::vector<const PrinterContents*>;

std::string Names(const Group& printers) {
    std::string names;
    for (const PrinterContents* printer : printers)
        names += (names.empty() ? "" : ", ") + printer->name;
    return names;
}

// Printers with the same differences, the largest group first: in a fleet nearly all are alike.
std::vector<Group> AlikePrinters(const std::vector<PrinterContents>& printers) {
    std::map<std::vector<Differing>, Group> alike;
    for (const PrinterContents& printer : printers)
        if (printer.differences && !printer.differences->empty())
            alike[*printer.differences].push_back(&printer);
    std::vector<Group> groups;
    groups.reserve(alike.size());
    for (auto& [differences, group] : alike) groups.push_back(std::move(group));
    std::ranges::stable_sort(groups, std::ranges::greater(), &Group::size);
    return groups;
}

std::string DifferencesHtml(const std::vector<PrinterContents>& printers) {
    const std::vector<Group> groups = AlikePrinters(printers);
    std::string html;
    for (const Group& group : groups) {
        HtmlTable table{"What differs from the defaults", {"Setting", "Value", "Default"}, {}};
        for (const Differing& differing : *group[0]->differences)
            table.rows.push_back({differing.name, differing.value, differing.usual});
        const std::string who =
            group.size() == 1 ? group[0]->name : Counted(group.size(), "printer");
        const std::string names =
            group.size() == 1 ? "" : Folded("Their names", Element("p", Names(group)), false);
        html += Folded(who + ": " + Counted(table.rows.size(), "setting") + " other than default",
                       names + ToHtml(table), groups.size() <= kMostOpen);
    }
    return "<div class=\"differences\">\n" + html + "</div>\n";
}

}  // namespace

std::string ProblemList(const std::vector<std::string>& problems) {
    std::string html = "<ul class=\"problems\">\n";
    for (const std::string& problem : problems) html += Element("li", problem) + "\n";
    return html + "</ul>\n";
}

std::string ProblemsHtml(const Json& examination) {
    const Json& problems = examination.at("problems");
    if (problems.empty()) return "<p class=\"good\">No problem was found.</p>\n";
    return ProblemList(problems.get<std::vector<std::string>>());
}

std::string HealthHtml(const Json& examination) {
    return "<div class=\"cards\">\n" + Card("Versions", examination.at("versions")) +
           Card("Log file", examination.at("log")) +
           Card("Resource file", examination.at("resource")) +
           Card("Paths", examination.at("paths")) + "</div>\n" +
           RegistryHtml(examination.at("registry"));
}

std::string PrintersHtml(const Contents& contents) {
    if (!contents.printer_problem.empty()) return ProblemList({contents.printer_problem});
    if (contents.printers.empty()) return "<p>No printer is installed.</p>\n";
    return PrinterTable(contents.printers) + DifferencesHtml(contents.printers);
}

}  // namespace qv
