#include "completion/writers.h"

namespace qv {

namespace {

// Words that are split at line ends, so that they may hold blanks; printers come escaped.
constexpr const char* kBashHead = R"script(# Completion of qv for bash.
_qv_words() {
    local IFS=$'\n'
    COMPREPLY+=($(compgen -W "$1" -- "$cur"))
}
_qv_files() {
    local IFS=$'\n'
    compopt -o filenames 2>/dev/null
    COMPREPLY+=($(compgen -f -- "$cur"))
}
_qv_folders() {
    local IFS=$'\n'
    compopt -o filenames 2>/dev/null
    COMPREPLY+=($(compgen -d -- "$cur"))
}
_qv_printers() {
    local name begun=$cur quote=
    case $cur in
        \"* | \'*) quote=${cur:0:1} begun=${cur:1} ;;
        *) begun=${cur//\\/} ;;
    esac
    while IFS= read -r name; do
        [[ $name == "$begun"* ]] || continue
        if [[ -n $quote ]]; then COMPREPLY+=("$name"); else COMPREPLY+=("$(printf %q "$name")"); fi
    done < <("$program" printers 2>/dev/null | cut -f1)
}
_qv() {
    local program=$1 cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} path=qv i
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        case "$path ${COMP_WORDS[i]}" in
)script";

void AppendBashValues(std::string& text, const ValueKind& kind) {
    if (!kind.choices.empty())
        text += " _qv_words " + QuotedForShell(Joined(kind.choices, "\n")) + ";";
    if (kind.file) text += " _qv_files;";
    if (kind.folder) text += " _qv_folders;";
    if (kind.printer) text += " _qv_printers;";
    text += " return ;;\n";
}

}  // namespace

std::string BashCompletion(const Tree& tree) {
    std::string text = kBashHead;
    for (std::size_t i = 1; i < tree.size(); ++i)
        text += "            " + QuotedForShell(tree[i].path) +
                ") path=" + QuotedForShell(tree[i].path) + " ;;\n";
    text += "        esac\n    done\n    case \"$path $prev\" in\n";
    AppendValueCases(text, tree, AppendBashValues);
    text += "    esac\n    case $path in\n";
    for (const CommandEntry& command : tree) {
        text += "        " + QuotedForShell(command.path) + ")\n";
        text += "            if [[ $cur == -* ]]; then _qv_words " +
                QuotedForShell(Joined(OptionNames(command), "\n")) + "; return; fi\n";
        std::vector<std::string> words = ArgumentChoices(command);
        words.insert(words.end(), command.commands.begin(), command.commands.end());
        if (!words.empty())
            text += "            _qv_words " + QuotedForShell(Joined(words, "\n")) + "\n";
        if (TakesPrinters(command)) text += "            _qv_printers\n";
        if (TakesFiles(command)) text += "            _qv_files\n";
        text += "            ;;\n";
    }
    return text + "    esac\n}\ncomplete -F _qv qv\n";
}

}  // namespace qv
