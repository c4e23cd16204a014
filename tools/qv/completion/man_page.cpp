#include <algorithm>

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
    ".TP\n\\fBNO_COLOR\\fR\nNo colours on a terminal when this variable is set.\n"
    ".TP\n\\fBQV_HOST_ROOT\\fR\nThe folder with the registry and files of this machine (Linux "
    "only).\n";

std::string Section(const CommandEntry& command) {
    std::string text = ".SS " + Plain(command.path) + "\n" + Synopsis(command);
    text += ".PP\n" + Sentence(Plain(command.description)) + OptionParagraphs(command);
    return command.footer.empty() ? text : text + ".PP\n" + AsItStands(command.footer);
}

}  // namespace

std::string PageName(std::string path) {
    std::replace(path.begin(), path.end(), ' ', '-');
    return path;
}

std::string ManPage(const Tree& tree, const std::string& path) {
    const auto place = std::find_if(tree.begin(), tree.end(), [&path](const CommandEntry& entry) {
        return entry.path == path;
    });
    if (place == tree.end()) return "";
    const CommandEntry& subject = *place;
    const std::string page = PageName(path);
    std::string text = ".TH " + Upper(page) + R"( 1 "" ")" + tree.front().name +
                       " " QV_RTL_VERSION_TEXT "\" \"User Commands\"\n";
    text += ".SH NAME\n" + Plain(page) + " \\- " + Plain(subject.description) + "\n";
    text += ".SH SYNOPSIS\n" + Synopsis(subject);
    text += ".SH OPTIONS\n" + OptionParagraphs(subject);
    const bool whole = place == tree.begin();
    if (!whole && !subject.footer.empty()) text += ".SH NOTES\n" + AsItStands(subject.footer);
    std::string commands;
    for (auto command = place + 1; command != tree.end(); ++command)
        if (whole || command->path.starts_with(path + " ")) commands += Section(*command);
    if (!commands.empty()) text += ".SH COMMANDS\n" + commands;
    text += ".SH EXIT STATUS\n" + AsItStands(tree.front().footer) + kEnvironment;
    return whole ? text : text + ".SH SEE ALSO\n\\fB" + tree.front().name + "\\fR(1)\n";
}

}  // namespace qv
