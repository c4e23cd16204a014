// Names without case: registry keys and values, printers, drivers. They compare unit by unit in
// upper case, as file names do.
#pragma once

#include <string_view>

namespace host {

// Below, at or above 0, by the folded units in order. Any thread.
int CompareFolded(std::u16string_view a, std::u16string_view b);

inline bool EqualFolded(std::u16string_view a, std::u16string_view b) {
    return a.size() == b.size() && CompareFolded(a, b) == 0;
}

struct FoldedLess {
    bool operator()(std::u16string_view a, std::u16string_view b) const {
        return CompareFolded(a, b) < 0;
    }
};

}  // namespace host
