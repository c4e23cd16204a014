#include "base/suggestion.h"

#include <algorithm>
#include <cctype>

namespace qv {

namespace {

// Far above every name; limits the work for long input.
constexpr std::size_t kLongestWord = 100;

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// The number of changed letters and swapped neighbours between two words.
std::size_t Distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> two_back, back, row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        two_back = std::move(back);
        back = std::move(row);
        row.assign(b.size() + 1, i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t changed = back[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({back[j] + 1, row[j - 1] + 1, changed});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], two_back[j - 2] + 1);
        }
    }
    return row.back();
}

}  // namespace

std::string Closest(const std::string& word, const std::vector<std::string>& candidates) {
    if (word.empty() || word.size() > kLongestWord) return "";
    const std::string wanted = Lower(word);
    std::string closest;
    std::size_t least = std::max<std::size_t>(wanted.size() / 3, 1) + 1;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = Distance(wanted, Lower(candidate));
        if (distance >= least || distance >= candidate.size()) continue;
        least = distance;
        closest = candidate;
    }
    return closest;
}

std::string Suggestion(const std::string& word, const std::vector<std::string>& candidates) {
    const std::string closest = Closest(word, candidates);
    return closest.empty() ? "" : "; did you mean '" + closest + "'?";
}

}  // namespace qv
