#include "completion/writers.h"

namespace qv {

namespace {

constexpr const char* kFishHead = R"script(# Completion of qv for fish.
function __qv_path
    set -l path qv
    for word in (commandline -opc)[2..-1]
        switch "$path $word"
)script";

constexpr const char* kFishTail = R"script(        end
    end
    echo $path
end
function __qv_at
    test (__qv_path) = $argv[1]
end
function __qv_printers
    qv printers 2>/dev/null | cut -f1
end
complete -c qv -f
)script";

std::string Condition(const CommandEntry& command) {
    return "complete -c qv -n " + QuotedForFish("__qv_at " + QuotedForFish(command.path));
}

void AppendFishValues(std::string& text, const ValueKind& kind) {
    if (!kind.choices.empty()) text += " -a " + QuotedForFish(Joined(kind.choices, " "));
    if (kind.printer) text += " -a '(__qv_printers)'";
    if (kind.file) text += " -F";
    if (kind.folder) text += " -a '(__fish_complete_directories)'";
}

void AppendOption(std::string& text, const CommandEntry& command, const OptionEntry& option) {
    text += Condition(command);
    for (const std::string& name : option.names)
        text += name.substr(0, 2) == "--" ? " -l " + name.substr(2) : " -s " + name.substr(1);
    if (!option.IsFlag()) {
        text += " -r";
        AppendFishValues(text, option.kind);
    }
    text += " -d " + QuotedForFish(FirstLine(option.description)) + "\n";
}

}  // namespace

std::string FishCompletion(const Tree& tree) {
    std::string text = kFishHead;
    for (std::size_t i = 1; i < tree.size(); ++i)
        text += "            case " + QuotedForFish(tree[i].path) + "\n                set path " +
                QuotedForFish(tree[i].path) + "\n";
    text += kFishTail;
    for (const CommandEntry& command : tree) {
        for (const OptionEntry& option : command.options) AppendOption(text, command, option);
        for (const OptionEntry& positional : command.positionals) {
            const ValueKind& kind = positional.kind;
            if (kind.choices.empty() && !kind.printer && !kind.file && !kind.folder) continue;
            text += Condition(command);
            AppendFishValues(text, kind);
            text += " -d " + QuotedForFish(FirstLine(positional.description)) + "\n";
        }
        for (const CommandEntry& below : tree)
            if (below.path == command.path + " " + below.name)
                text += Condition(command) + " -a " + below.name + " -d " +
                        QuotedForFish(FirstLine(below.description)) + "\n";
    }
    return text;
}

}  // namespace qv
