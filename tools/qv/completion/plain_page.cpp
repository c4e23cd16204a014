// The manual page for a machine without `man`: the page's own text, laid out for a terminal.
#include <sstream>

#include "base/console.h"
#include "completion/writers.h"

namespace qv {

namespace {

// The text that the page writer's escapes stand for.
std::string Unescaped(const std::string& line) {
    std::string text;
    for (std::size_t at = 0; at < line.size(); ++at) {
        if (line[at] != '\\') {
            text += line[at];
            continue;
        }
        const char kind = line[++at];
        if (kind == 'f') {
            ++at;  // a font
        } else if (kind == '[') {
            const std::size_t end = line.find(']', at);
            const std::string digits = line.substr(at + 2, end - at - 2);
            text += ToUtf8(UnicodeString(static_cast<WCHAR>(std::stoi(digits, nullptr, 16))));
            at = end;
        } else if (kind != '&') {
            text += kind == 'e' ? '\\' : kind;
        }
    }
    return text;
}

constexpr std::size_t kTextMargin = 4, kTermMargin = 4, kDescriptionMargin = 8;

}  // namespace

std::string PlainPage(const Tree& tree, const std::string& path) {
    std::istringstream page(ManPage(tree, path));
    std::string text;
    std::string line;
    std::size_t margin = kTextMargin;
    while (std::getline(page, line)) {
        const std::string request = line.substr(0, line.find(' '));
        if (request == ".SH" || request == ".SS") {
            text += "\n" + std::string(request == ".SS" ? 2 : 0, ' ') +
                    Unescaped(line.substr(request.size() + 1)) + "\n";
            margin = kTextMargin;
        } else if (request == ".TP") {
            std::getline(page, line);
            text += std::string(kTermMargin, ' ') + Unescaped(line) + "\n";
            margin = kDescriptionMargin;
        } else if (request == ".PP") {
            margin = kTextMargin;
        } else if (line[0] != '.') {
            text += std::string(margin, ' ') + Unescaped(line) + "\n";
        }
    }
    return text.empty() ? text : text.substr(1);
}

}  // namespace qv
