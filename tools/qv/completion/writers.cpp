#include "completion/writers.h"

#include <algorithm>

namespace qv {

namespace {

// `text` between single quotes, in which `special` characters are replaced by what stands for them.
std::string QuotedBy(const std::string& text, const std::string& special, const char* stands_for) {
    std::string result = "'";
    for (const char c : text) {
        if (special.find(c) == std::string::npos) {
            result += c;
        } else if (c == '\\') {
            result += "\\\\";
        } else {
            result += stands_for;
        }
    }
    return result + "'";
}

}  // namespace

std::string QuotedForShell(const std::string& text) {
    return QuotedBy(text, "'", "'\\''");
}

std::string QuotedForFish(const std::string& text) {
    return QuotedBy(text, "'\\", "\\'");
}

std::string QuotedForPowerShell(const std::string& text) {
    return QuotedBy(text, "'", "''");
}

std::vector<std::string> OptionNames(const CommandEntry& command) {
    std::vector<std::string> names;
    for (const OptionEntry& option : command.options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return names;
}

std::string Joined(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

bool TakesFiles(const CommandEntry& command) {
    return std::any_of(command.positionals.begin(), command.positionals.end(),
                       [](const OptionEntry& p) { return p.kind.file || p.kind.folder; });
}

bool TakesPrinters(const CommandEntry& command) {
    return std::any_of(command.positionals.begin(), command.positionals.end(),
                       [](const OptionEntry& p) { return p.kind.printer; });
}

std::vector<std::string> ArgumentChoices(const CommandEntry& command) {
    std::vector<std::string> choices;
    for (const OptionEntry& positional : command.positionals)
        choices.insert(choices.end(), positional.kind.choices.begin(),
                       positional.kind.choices.end());
    return choices;
}

void AppendValueCases(std::string& text, const Tree& tree,
                      void (*append_kind)(std::string& text, const ValueKind& kind)) {
    for (const CommandEntry& command : tree) {
        for (const OptionEntry& option : command.options) {
            if (option.IsFlag()) continue;
            std::vector<std::string> patterns;
            for (const std::string& name : option.names)
                patterns.push_back(QuotedForShell(command.path + " " + name));
            text += "        " + Joined(patterns, " | ") + ")";
            append_kind(text, option.kind);
        }
    }
}

}  // namespace qv
