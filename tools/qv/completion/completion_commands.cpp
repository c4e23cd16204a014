// qv completion, qv man: what other programs need to know of the command line.
#include <map>
#include <memory>

#include "base/commands.h"
#include "base/console.h"
#include "completion/writers.h"

namespace qv {

namespace {

using Writer = std::string (*)(const Tree&);

const std::map<std::string, Writer>& Shells() {
    static const std::map<std::string, Writer> shells = {{"bash", BashCompletion},
                                                         {"zsh", ZshCompletion},
                                                         {"fish", FishCompletion},
                                                         {"powershell", PowerShellCompletion}};
    return shells;
}

std::vector<std::string> ShellNames() {
    std::vector<std::string> names;
    for (const auto& [name, writer] : Shells()) names.push_back(name);
    return names;
}

}  // namespace

void AddCompletionCommands(CLI::App& app) {
    auto shell = std::make_shared<std::string>();
    CLI::App* completion = app.add_subcommand("completion", "Write a shell's completion of qv");
    completion->footer(
        "Set up:\n"
        "  bash        qv completion bash >~/.local/share/bash-completion/completions/qv\n"
        "  zsh         qv completion zsh >FOLDER/_qv, FOLDER being in $fpath\n"
        "  fish        qv completion fish >~/.config/fish/completions/qv.fish\n"
        "  PowerShell  qv completion powershell | Out-String | Invoke-Expression (in $PROFILE)");
    completion->add_option("SHELL", *shell, "Which shell")
        ->required()
        ->check(CLI::IsMember(ShellNames()));
    completion->callback([&app, shell] { Print(Shells().at(*shell)(CommandTree(app))); });

    auto as_text = std::make_shared<bool>(false);
    CLI::App* man = app.add_subcommand("man", "Write the manual page of qv: `qv man | man -l -`");
    man->add_flag("--text", *as_text, "As plain text, where there is no `man`");
    man->callback([&app, as_text] { Print((*as_text ? PlainPage : ManPage)(CommandTree(app))); });
}

}  // namespace qv
