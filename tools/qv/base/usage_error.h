// The message for a command line that the parser refuses.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace qv {

// Turns the parser's `error` into a message. When a word is unknown, the message names it and the
// closest known word. `words` is the command line without the program.
std::string UsageError(const CLI::App& app, const CLI::Error& error,
                       const std::vector<std::string>& words);

}  // namespace qv
