// The command line as data, for the manual page and the completions. It comes from the parser
// itself, so that no option can be missing.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace qv {

// The kind of value that an argument takes. It follows from the names of the value and the option:
// FILE, OUT.zip and --output-file mean a file, PRINTER a printer, "FILE|PRINTER" both.
struct ValueKind {
    std::vector<std::string> choices;
    bool file = false;
    bool folder = false;
    bool printer = false;
};

struct OptionEntry {
    std::vector<std::string> names;  // "-n", "--name"; of a positional its name alone
    std::string value;               // the name of its value; empty for a flag
    std::string description;
    std::string preset;  // the default as the help shows it
    bool required = false;
    bool repeated = false;
    ValueKind kind;

    bool IsFlag() const { return value.empty(); }
};

struct CommandEntry {
    std::string path;  // "qv log show"
    std::string name;
    std::string description;
    std::string footer;
    std::vector<OptionEntry> options;
    std::vector<OptionEntry> positionals;
    std::vector<std::string> commands;  // names of those below
};

// The program itself first, then every command in the order of the help, each followed by its own.
std::vector<CommandEntry> CommandTree(const CLI::App& app);

// The text with ASCII letters in upper case.
std::string Upper(std::string text);

}  // namespace qv
