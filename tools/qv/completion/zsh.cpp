#include "completion/writers.h"

namespace qv {

namespace {

constexpr const char* kZshHead = R"script(#compdef qv
# Completion of qv for zsh.
_qv_printers() {
    local -a printers
    printers=(${(f)"$($program printers 2>/dev/null | cut -f1)"})
    compadd -a printers
}
_qv() {
    local program=$words[1] path_of=qv i
    local -a options commands
    for ((i = 2; i < CURRENT; i++)); do
        case "$path_of $words[i]" in
)script";

// "name:description", as _describe takes it.
std::string Described(const std::string& name, const std::string& description) {
    std::string escaped;
    for (const char c : name) escaped += c == ':' ? std::string("\\:") : std::string(1, c);
    return QuotedForShell(escaped + ":" + FirstLine(description));
}

void AppendZshValues(std::string& text, const ValueKind& kind) {
    if (!kind.choices.empty()) {
        text += " compadd --";
        for (const std::string& choice : kind.choices) text += " " + QuotedForShell(choice);
        text += ";";
    }
    if (kind.file) text += " _files;";
    if (kind.folder) text += " _files -/;";
    if (kind.printer) text += " _qv_printers;";
    text += " return ;;\n";
}

void AppendCommand(std::string& text, const CommandEntry& command, const Tree& tree) {
    text += "        " + QuotedForShell(command.path) + ")\n            options=(\n";
    for (const OptionEntry& option : command.options)
        for (const std::string& name : option.names)
            text += "                " + Described(name, option.description) + "\n";
    text += "            )\n";
    if (!command.commands.empty()) {
        text += "            commands=(\n";
        for (const CommandEntry& below : tree)
            if (below.path == command.path + " " + below.name)
                text += "                " + Described(below.name, below.description) + "\n";
        text += "            )\n";
    }
    text += "            if [[ $PREFIX != -* ]]; then\n                :\n";
    if (!command.commands.empty())
        text += "                _describe -t commands command commands\n";
    const std::vector<std::string> choices = ArgumentChoices(command);
    if (!choices.empty()) {
        text += "                compadd --";
        for (const std::string& choice : choices) text += " " + QuotedForShell(choice);
        text += "\n";
    }
    if (TakesPrinters(command)) text += "                _qv_printers\n";
    if (TakesFiles(command)) text += "                _files\n";
    text +=
        "            else\n                _describe -o -t options option options\n            "
        "fi\n            ;;\n";
}

}  // namespace

std::string ZshCompletion(const Tree& tree) {
    std::string text = kZshHead;
    for (std::size_t i = 1; i < tree.size(); ++i)
        text += "            " + QuotedForShell(tree[i].path) +
                ") path_of=" + QuotedForShell(tree[i].path) + " ;;\n";
    text += "        esac\n    done\n    case \"$path_of $words[CURRENT-1]\" in\n";
    AppendValueCases(text, tree, AppendZshValues);
    text += "    esac\n    case $path_of in\n";
    for (const CommandEntry& command : tree) AppendCommand(text, command, tree);
    return text +
           "    esac\n}\n"
           "if [[ $funcstack[1] == _qv ]]; then _qv \"$@\"; else compdef _qv qv; fi\n";
}

}  // namespace qv
