#include "log/level_words.h"

#include <algorithm>
#include <iterator>

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

}  // namespace

std::optional<char> LevelOf(std::string_view word) {
    const auto fits = [&](const LevelRow& row) {
        return IsSame(word, row.word) || IsSame(word, {&row.level, 1});
    };
    const auto* const row = std::find_if(std::begin(kLevels), std::end(kLevels), fits);
    if (row == std::end(kLevels)) return std::nullopt;
    return row->level;
}

}  // namespace qv
