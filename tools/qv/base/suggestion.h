// "Did you mean": the known word that is closest to one that is not known.
#pragma once

#include <string>
#include <vector>

namespace qv {

// The candidate that is closest to `word` by changed letters, without regard to case. Two swapped
// neighbours are one change. The first of equally close candidates; empty when none is close.
std::string Closest(const std::string& word, const std::vector<std::string>& candidates);

// "; did you mean 'dmCopies'?", or nothing.
std::string Suggestion(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace qv
