// The levels of a log as people type them: a letter or a word.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qv {

// For the help of options.
inline constexpr const char* kLevelWords =
    "X or error, * or warning, i or information (info), a blank or trace";

// The level that one letter or word stands for, in capitals or not; nothing for any other. '>', the
// log itself, has the word "log": records of it can be looked for, but nobody else writes them.
std::optional<char> LevelOf(std::string_view word);

// The levels of an option's value: words apart by commas, or letters side by side ("X*"). Throws
// Failure (kWrongUsage) for what is no level.
std::string LevelsOf(const char* option, const std::string& list);

}  // namespace qv
