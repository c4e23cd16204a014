#include "report/html.h"

#include "base/utf8_text.h"

namespace qv {

std::string Html(const std::string& text) {
    std::string html;
    for (const char c : Lines(FromUtf8(text))) {
        switch (c) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            default:
                html += c;
        }
    }
    return html;
}

std::string Element(const std::string& tag, const std::string& text) {
    return "<" + tag + ">" + Html(text) + "</" + tag + ">";
}

std::string ToHtml(const HtmlTable& table) {
    // What scrolls can be reached with the keyboard.
    constexpr std::size_t kMostInSight = 12;
    std::string html = "<div class=\"scroll\"";
    if (table.rows.size() > kMostInSight)
        html += R"( tabindex="0" role="region" aria-label=")" + Html(table.caption) + "\"";
    html += "><table><caption>" + Html(table.caption) + "</caption><thead><tr>";
    for (const std::string& head : table.heads) html += "<th scope=\"col\">" + Html(head) + "</th>";
    html += "</tr></thead><tbody>\n";
    for (const auto& row : table.rows) {
        html += "<tr>";
        for (std::size_t i = 0; i < row.size(); ++i)
            html += i == 0 ? "<th scope=\"row\">" + Html(row[i]) + "</th>" : Element("td", row[i]);
        html += "</tr>\n";
    }
    return html + "</tbody></table></div>\n";
}

std::string FillTemplate(std::string_view page, const std::map<std::string, std::string>& parts) {
    std::string result;
    for (std::size_t open = 0; (open = page.find("{{")) != std::string_view::npos;) {
        const std::size_t close = page.find("}}", open);
        if (close == std::string_view::npos) break;
        result += page.substr(0, open);
        result += parts.at(std::string(page.substr(open + 2, close - open - 2)));
        page.remove_prefix(close + 2);
    }
    return result.append(page);
}

}  // namespace qv
