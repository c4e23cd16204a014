// Texts and tables as HTML.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qv {

// UTF-8 as the text of an element or of an attribute in quotes. Control characters and those that
// turn the direction of writing are shown as escapes; line feeds and tabs stay.
std::string Html(const std::string& text);

// <tag>text</tag>
std::string Element(const std::string& tag, const std::string& text);

// A table of texts; of a row the first is its head. It scrolls where it has no room.
struct HtmlTable {
    std::string caption;
    std::vector<std::string> heads;
    std::vector<std::vector<std::string>> rows;
};
std::string ToHtml(const HtmlTable& table);

// The template with "{{name}}" replaced by what `parts` holds for it.
std::string FillTemplate(std::string_view page, const std::map<std::string, std::string>& parts);

}  // namespace qv
