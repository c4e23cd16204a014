// "Did you mean": the known word that is closest to one that is not known.
#pragma once

#include <string>
#include <vector>

namespace qv {

// The candidate that fewest changes of a letter turn into `word`, letters counting in either case;
// empty when none is close. Swapping two neighbours is one change. Of two that are equally close
// the first.
std::string Closest(const std::string& word, const std::vector<std::string>& candidates);

// "; did you mean 'dmCopies'?", or nothing.
std::string Suggestion(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace qv
