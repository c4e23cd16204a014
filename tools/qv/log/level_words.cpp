#include "log/level_words.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "base/console.h"
#include "base/suggestion.h"

namespace qv {

namespace {

struct LevelRow {
    char level;
    std::string_view word;  // in small letters
};
constexpr LevelRow kLevels[] = {{'X', "error"}, {'*', "warning"}, {'i', "information"},
                                {'i', "info"},  {' ', "trace"},   {'>', "log"}};

char Small(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsSame(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return Small(x) == Small(y); });
}

// Adds the levels of a word, or of letters that stand side by side.
bool AddLevels(std::string& levels, std::string_view part) {
    if (const std::optional<char> level = LevelOf(part)) {
        levels += *level;
        return true;
    }
    for (const char letter : part) {
        const std::optional<char> level = LevelOf({&letter, 1});
        if (!level) return false;
        levels += *level;
    }
    return !part.empty();
}

[[noreturn]] void RefuseLevel(const char* option, std::string_view word) {
    std::vector<std::string> words;
    for (const LevelRow& row : kLevels) words.emplace_back(row.word);
    const std::string shown = OneLine(FromUtf8(std::string(word)));
    const std::string suggestion = Suggestion(shown, words);
    throw Failure(std::string(option) + ": '" + shown + "' is no level" +
                      (suggestion.empty() ? std::string("; there are ") + kLevelWords : suggestion),
                  ExitCode::kWrongUsage);
}

}  // namespace

std::optional<char> LevelOf(std::string_view word) {
    const auto fits = [&](const LevelRow& row) {
        return IsSame(word, row.word) || IsSame(word, {&row.level, 1});
    };
    const auto* const row = std::find_if(std::begin(kLevels), std::end(kLevels), fits);
    if (row == std::end(kLevels)) return std::nullopt;
    return row->level;
}

std::string LevelsOf(const char* option, const std::string& list) {
    std::string levels;
    std::string_view rest = list;
    while (true) {
        const std::size_t comma = rest.find(',');
        const std::string_view part = rest.substr(0, comma);
        if (!AddLevels(levels, part)) RefuseLevel(option, part);
        if (comma == std::string_view::npos) return levels;
        rest.remove_prefix(comma + 1);
    }
}

}  // namespace qv
