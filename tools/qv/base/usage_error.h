// What to say of a command line that the parser does not take.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace qv {

// The message for `error`, the parser's, with the word that is unknown and the closest known one
// where one is unknown. `words` is the command line without the program.
std::string UsageError(const CLI::App& app, const CLI::Error& error,
                       const std::vector<std::string>& words);

}  // namespace qv
