#include "base/console.h"
#include "completion/writers.h"
#include "qv_rtl_version.h"

namespace qv {

namespace {

// The text with every character escaped that roff would act on.
std::string Plain(const std::string& text) {
    std::string result;
    bool at_start = true;
    const UnicodeString units = FromUtf8(text);
    for (int i = 0; i < units.Length(); ++i) {
        const unsigned unit = units.t_str()[i];
        if (at_start && (unit == '.' || unit == '\'')) result += "\\&";
        at_start = unit == '\n';
        if (unit == '\\') {
            result += "\\e";
        } else if (unit == '-') {
            result += "\\-";
        } else if (unit < 0x80) {
            result += static_cast<char>(unit);
        } else {
            char escaped[16];
            std::snprintf(escaped, sizeof(escaped), "\\[u%04X]", unit);
            result += escaped;
        }
    }
    return result;
}

// The lines as they are: examples and tables.
std::string AsItStands(const std::string& text) {
    const std::size_t end = text.find_last_not_of('\n');
    return end == std::string::npos ? "" : ".nf\n" + Plain(text.substr(0, end + 1)) + "\n.fi\n";
}

std::string Synopsis(const CommandEntry& command) {
    std::string text = "\\fB" + Plain(command.path) + "\\fR";
    if (!command.options.empty()) text += " [\\fIOPTIONS\\fR]";
    for (const OptionEntry& positional : command.positionals) {
        std::string name = "\\fI" + Plain(positional.names.front()) + "\\fR";
        if (positional.repeated) name += "...";
        text += positional.required ? " " + name : " [" + name + "]";
    }
    if (!command.commands.empty()) text += " \\fICOMMAND\\fR";
    return text + "\n";
}

std::string Sentence(const std::string& text) {
    return text + (text.empty() || text.back() != '.' ? ".\n" : "\n");
}

std::string Description(const OptionEntry& option) {
    std::string text = Plain(option.description.empty() ? "See above" : option.description);
    if (!option.kind.choices.empty()) text += " (" + Plain(Joined(option.kind.choices, ", ")) + ")";
    if (!option.preset.empty()) text += "; default: " + Plain(option.preset);
    return Sentence(text);
}

std::string OptionParagraphs(const CommandEntry& command) {
    std::string text;
    for (const OptionEntry& option : command.options) {
        std::vector<std::string> names;
        for (const std::string& name : option.names) names.push_back("\\fB" + Plain(name) + "\\fR");
        text += ".TP\n" + Joined(names, ", ");
        if (!option.IsFlag()) text += " \\fI" + Plain(option.value) + "\\fR";
        text += "\n" + Description(option);
    }
    for (const OptionEntry& positional : command.positionals)
        text += ".TP\n\\fI" + Plain(positional.names.front()) + "\\fR\n" + Description(positional);
    return text;
}

constexpr const char* kEnvironment =
    ".SH ENVIRONMENT\n"
    ".TP\n\\fBNO_COLOR\\fR\nNo colour on a terminal when it is set.\n"
    ".TP\n\\fBQV_HOST_ROOT\\fR\nThe folder that stands in for a Windows machine; not used on "
    "Windows.\n";

}  // namespace

std::string ManPage(const Tree& tree) {
    const CommandEntry& program = tree.front();
    std::string text = ".TH " + Upper(program.name) + R"( 1 "" ")" + program.name +
                       " " QV_RTL_VERSION_TEXT "\" \"User Commands\"\n";
    text += ".SH NAME\n" + program.name + " \\- " + Plain(program.description) + "\n";
    text += ".SH SYNOPSIS\n" + Synopsis(program);
    text += ".SH OPTIONS\n" + OptionParagraphs(program);
    text += ".SH COMMANDS\n";
    for (std::size_t i = 1; i < tree.size(); ++i) {
        const CommandEntry& command = tree[i];
        text += ".SS " + Plain(command.path) + "\n" + Synopsis(command);
        text += ".PP\n" + Sentence(Plain(command.description)) + OptionParagraphs(command);
        if (!command.footer.empty()) text += ".PP\n" + AsItStands(command.footer);
    }
    text += ".SH EXIT STATUS\n" + AsItStands(program.footer);
    return text + kEnvironment;
}

}  // namespace qv
