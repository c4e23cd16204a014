// "Did you mean": finds the known word that is closest to an unknown one.
#pragma once

#include <string>
#include <vector>

namespace qv {

// The candidate with the fewest changed letters, compared without regard to case; the first of
// several. Two swapped letters count as one change. Empty when no candidate is close.
std::string Closest(const std::string& word, const std::vector<std::string>& candidates);

// "; did you mean 'dmCopies'?", or an empty text.
std::string Suggestion(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace qv
