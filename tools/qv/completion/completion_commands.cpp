// qv completion, qv man, qv help: describe the command line to shells, manuals and people.
#include <map>
#include <memory>

#include "base/commands.h"
#include "base/console.h"
#include "base/files.h"
#include "base/suggestion.h"
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

// The page of the command that the words name; the whole manual without any.
std::string Page(const CLI::App& app, const std::vector<std::string>& words,
                 decltype(&ManPage) write) {
    const Tree tree = CommandTree(app);
    const std::string topic = Joined(words, " ");
    std::string page = write(tree, topic.empty() ? app.get_name() : app.get_name() + " " + topic);
    if (!page.empty()) return page;
    std::vector<std::string> known;
    for (auto entry = tree.begin() + 1; entry != tree.end(); ++entry)
        known.push_back(entry->path.substr(app.get_name().size() + 1));
    throw Failure("no page on " + Quoted(topic) + Suggestion(topic, known), ExitCode::kWrongUsage);
}

// Writes the page of everything, and one for each command below the program.
void WritePages(const CLI::App& app, const std::string& folder) {
    const Tree tree = CommandTree(app);
    std::vector<std::string> paths = {tree.front().path};
    for (const std::string& name : tree.front().commands)
        paths.push_back(tree.front().path + " " + name);
    for (const std::string& path : paths)
        WriteAll(folder + "/" + PageName(path) + ".1", ManPage(tree, path));
}

void AddManual(CLI::App& app) {
    auto folder = std::make_shared<std::string>();
    auto as_text = std::make_shared<bool>(false);
    auto words = std::make_shared<std::vector<std::string>>();
    CLI::App* man = app.add_subcommand(
        "man", "Write the manual page of qv, or of one command: `qv man log | man -l -`");
    man->add_flag("--text", *as_text, "As plain text, for systems without `man`");
    man->add_option("--write", *folder, "Into this folder, a page for each command")
        ->type_name("FOLDER");
    man->add_option("COMMAND", *words, "The command's words");
    man->callback([&app, folder, as_text, words] {
        if (!folder->empty()) return WritePages(app, *folder);
        Print(Page(app, *words, *as_text ? PlainPage : ManPage));
    });
}

void AddHelp(CLI::App& app) {
    auto words = std::make_shared<std::vector<std::string>>();
    CLI::App* help = app.add_subcommand("help", "Show the manual page of a command");
    help->add_option("TOPIC", *words,
                     "The words of the command; without words, the list of commands");
    help->callback(
        [&app, words] { Print(words->empty() ? app.help() : Page(app, *words, PlainPage)); });
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
    completion->add_option("SHELL", *shell, "The shell")
        ->required()
        ->check(CLI::IsMember(ShellNames()));
    completion->callback([&app, shell] { Print(Shells().at(*shell)(CommandTree(app))); });

    AddManual(app);
    AddHelp(app);
}

}  // namespace qv
