#include "report/report_page.h"

#include <algorithm>

#include "log/log_time.h"
#include "log/record_parts.h"
#include "qv_rtl_version.h"
#include "report/health_html.h"
#include "report/html.h"
#include "report/log_columns.h"
#include "report/page_files.h"

namespace qv {

namespace {

using Parts = std::map<std::string, std::string>;

// What runs, and how it looks, is known by its hash: no text of a log or a printer can add to it,
// and nothing is fetched.
std::string Policy() {
    return "default-src 'none'; script-src 'sha256-" + std::string(kPageScript.hash) +
           "'; style-src 'sha256-" + std::string(kPageStyle.hash) +
           "'; base-uri 'none'; form-action 'none'";
}

// As the content of a script element, which "<" alone could end.
std::string ScriptData(const Json& data) {
    const std::string json = data.dump(-1, ' ', true, Json::error_handler_t::replace);
    std::string text;
    text.reserve(json.size() + json.size() / 64);
    for (const char c : json) {
        if (c == '<') {
            text += "\\u003c";
        } else {
            text += c;
        }
    }
    return text;
}

std::string Section(const std::string& id, const std::string& title, const std::string& html) {
    return "<section id=\"" + id + "\" aria-labelledby=\"" + id + "-title\">\n<h2 id=\"" + id +
           "-title\">" + Html(title) + "</h2>\n" + html + "</section>\n";
}

std::string Fact(const std::string& name, const std::string& text) {
    return "<div>" + Element("dt", name) + Element("dd", text) + "</div>\n";
}

// A time as people write it.
std::string Clock(std::string time) {
    std::replace(time.begin(), time.end(), 'T', ' ');
    return time;
}

// What the log is, and what of it is on the page.
std::string LogFacts(const Contents& contents, const LogColumns& columns) {
    std::string names;
    for (const LogSource& log : contents.logs.logs) names += (names.empty() ? "" : ", ") + log.name;
    std::string html = "<dl class=\"facts\">\n" + Fact("File", names);
    if (columns.Count() != columns.Total()) {
        html += Fact("Chosen",
                     Counted(columns.Count(), "record") + " of " + std::to_string(columns.Total()));
    }
    if (!columns.FirstTime().empty())
        html += Fact("Time", Clock(columns.FirstTime()) + " to " + Clock(columns.LastTime()));
    return html + "</dl>\n";
}

// The newest records for a browser that runs no script.
std::string NewestTable(const Json& log) {
    constexpr std::size_t kMost = 100;
    const std::size_t count = log.at("levels").size();
    HtmlTable table{"The newest records", {"Time (UTC)", "Level", "Process", "Source", "Text"}, {}};
    const std::int64_t start = log.at("start").get<std::int64_t>();
    for (std::size_t i = count > kMost ? count - kMost : 0; i < count; ++i) {
        const Json& time = log.at("times")[i];
        const auto number = [&](const char* key) { return log.at(key)[i].get<std::int64_t>(); };
        table.rows.push_back(
            {time.is_null() ? "" : UtcText(LogTimeOf(start, time.get<std::int64_t>())),
             LevelName(static_cast<int>(number("levels"))), std::to_string(number("processes")),
             log.at("names")[static_cast<std::size_t>(number("sources"))].get<std::string>() + "," +
                 std::to_string(number("lines")),
             log.at("texts")[i].get<std::string>()});
    }
    return ToHtml(table);
}

void AddLog(Parts& parts, Contents& contents, const Redaction* redaction,
            const LogFilterOptions& filter) {
    LogColumns columns(filter);
    columns.Read(contents);
    Json log = columns.ToJson(redaction == nullptr);
    if (redaction != nullptr) Redact(log, *redaction);
    std::string& facts = parts["log-facts"];
    if (!contents.logs.logs.empty()) facts = LogFacts(contents, columns);
    if (!contents.log_problems.empty()) facts += ProblemList(contents.log_problems);
    parts["newest"] = NewestTable(log);
    parts["data"] = ScriptData(log);
}

void AddMachine(Parts& parts, const Contents& contents) {
    const Json& examination = *contents.examination;
    const Json& versions = examination.at("versions");
    const auto text = [&](const char* key) { return versions.at(key).get<std::string>(); };
    parts["title"] = Html("Fax printer on " + text("machine"));
    parts["facts"] = "<dl class=\"facts\">\n" + Fact("Machine", text("machine")) +
                     Fact("System", text("system")) + Fact("User", text("user")) +
                     Fact("Version", text("library")) + "</dl>\n";
    parts["nav"] =
        "<nav aria-label=\"Sections\"><a href=\"#health\">Health</a> <a href=\"#printers\">Printers"
        "</a> <a href=\"#log\">Log</a></nav>\n";
    parts["sections"] =
        Section("health", "Health", ProblemsHtml(examination) + HealthHtml(examination)) +
        Section("printers", "Printers and settings", PrintersHtml(contents));
}

}  // namespace

std::string ReportPage(Contents& contents, const Redaction* redaction,
                       const LogFilterOptions& filter) {
    Parts parts = {
        {"title", "Log of the fax printer"}, {"facts", ""}, {"nav", ""}, {"sections", ""}};
    if (contents.examination) AddMachine(parts, contents);
    AddLog(parts, contents, redaction, filter);
    parts["policy"] = Policy();
    parts["style"] = kPageStyle.text;
    parts["script"] = kPageScript.text;
    parts["made"] = Html(Clock(LocalText(Now()).substr(0, 19)) + " by qv " QV_RTL_VERSION_TEXT);
    parts["redacted"] =
        redaction == nullptr
            ? ""
            : "<p class=\"note\">Names of users, machines and documents are replaced.</p>\n";
    return FillTemplate(kPageTemplate.text, parts);
}

}  // namespace qv
