#include "completion/writers.h"

namespace qv {

namespace {

constexpr const char* kPowerShellHead = R"script(# Completion of qv for PowerShell.
Register-ArgumentCompleter -Native -CommandName 'qv', 'qv.exe' -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    $commands = @{
)script";

constexpr const char* kPowerShellTail = R"script(    }
    $path = 'qv'
    $previous = ''
    $elements = @($commandAst.CommandElements | Select-Object -Skip 1 |
        Where-Object { $_.Extent.EndOffset -lt $cursorPosition -or $wordToComplete -eq '' })
    foreach ($element in $elements) {
        $previous = $element.Extent.Text
        if ($commands.ContainsKey("$path $previous")) { $path = "$path $previous" }
    }
    $command = $commands[$path]
    $option = $command.Options | Where-Object { $_.Name -ceq $previous -and $_.Value }
    $items = if ($option) { $option.Value }
    elseif ($wordToComplete -like '-*') { $command.Options }
    else { $command.Arguments }
    foreach ($item in $items) {
        if ($item -is [string]) { $item = @{ Name = $item; Text = $item } }
        if ($item.Name -eq '<printer>') {
            & qv printers 2>$null | ForEach-Object { ($_ -split "`t")[0] } |
                Where-Object { $_ -like ($wordToComplete.Trim("'", '"') + '*') } |
                ForEach-Object {
                    [System.Management.Automation.CompletionResult]::new("'" + $_.Replace("'", "''") + "'", $_, 'ParameterValue', $_)
                }
        } elseif ($item.Name -eq '<file>') {
            [System.Management.Automation.CompletionCompleters]::CompleteFilename($wordToComplete)
        } elseif ($item.Name -like "$wordToComplete*") {
            [System.Management.Automation.CompletionResult]::new($item.Name, $item.Name, 'ParameterValue', $item.Text)
        }
    }
}
)script";

// The texts of a value, with the marks that the script looks for.
std::vector<std::string> ItemsOf(const ValueKind& kind) {
    std::vector<std::string> items = kind.choices;
    if (kind.printer) items.emplace_back("<printer>");
    if (kind.file || kind.folder) items.emplace_back("<file>");
    for (std::string& item : items) item = QuotedForPowerShell(item);
    return items;
}

std::string Item(const std::string& name, const std::string& description) {
    return "@{ Name = " + QuotedForPowerShell(name) +
           "; Text = " + QuotedForPowerShell(FirstLine(description));
}

std::string OptionItems(const CommandEntry& command) {
    std::string text;
    for (const OptionEntry& option : command.options) {
        for (const std::string& name : option.names) {
            text += "                " + Item(name, option.description);
            if (!option.IsFlag()) {
                const std::vector<std::string> items = ItemsOf(option.kind);
                text += "; Value = @(" +
                        (items.empty() ? QuotedForPowerShell("<none>") : Joined(items, ", ")) + ")";
            }
            text += " }\n";
        }
    }
    return text;
}

std::string ArgumentItems(const CommandEntry& command, const Tree& tree) {
    std::string text;
    for (const OptionEntry& positional : command.positionals)
        for (const std::string& item : ItemsOf(positional.kind))
            text += "                " + item + "\n";
    for (const CommandEntry& below : tree)
        if (below.path == command.path + " " + below.name)
            text += "                " + Item(below.name, below.description) + " }\n";
    return text;
}

}  // namespace

std::string PowerShellCompletion(const Tree& tree) {
    std::string text = kPowerShellHead;
    for (const CommandEntry& command : tree)
        text += "        " + QuotedForPowerShell(command.path) +
                " = @{\n            Options = @(\n" + OptionItems(command) +
                "            )\n            Arguments = @(\n" + ArgumentItems(command, tree) +
                "            )\n        }\n";
    return text + kPowerShellTail;
}

}  // namespace qv
