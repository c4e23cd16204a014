// Writers of manual pages and completion scripts.
#pragma once

#include "completion/command_tree.h"

namespace qv {

using Tree = std::vector<CommandEntry>;

// The manual page of a command and those below it as roff source, for section 1; the path of the
// program itself gives the page of everything. Empty when there is no such command.
std::string ManPage(const Tree& tree, const std::string& path);
// The name of that page: "qv-log" for "qv log".
std::string PageName(std::string path);
// The same text, laid out already.
std::string PlainPage(const Tree& tree, const std::string& path);

// Completion scripts. Names of printers come from `qv printers` at the time of completion.
std::string BashCompletion(const Tree& tree);
std::string ZshCompletion(const Tree& tree);
std::string FishCompletion(const Tree& tree);
std::string PowerShellCompletion(const Tree& tree);

// The text between single quotes as the shells take it: POSIX shells, fish, PowerShell.
std::string QuotedForShell(const std::string& text);
std::string QuotedForFish(const std::string& text);
std::string QuotedForPowerShell(const std::string& text);

// Every option's names, one after the other; all with a value only when asked for.
std::vector<std::string> OptionNames(const CommandEntry& command);
std::string Joined(const std::vector<std::string>& words, const std::string& separator);
// The first line of a description.
std::string FirstLine(const std::string& text);

// Where a command takes files or printers as arguments.
bool TakesFiles(const CommandEntry& command);
bool TakesPrinters(const CommandEntry& command);
std::vector<std::string> ArgumentChoices(const CommandEntry& command);

// The branches of a POSIX shell's `case` that complete the value of an option, one for each option
// that takes one: "'qv log show --level' | '...')", then what `append_kind` adds for it.
void AppendValueCases(std::string& text, const Tree& tree,
                      void (*append_kind)(std::string& text, const ValueKind& kind));

}  // namespace qv
