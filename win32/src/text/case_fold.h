// Names without case: files, registry keys and values, printers, drivers, environment variables.
// Windows folds them code unit by code unit; so does this. Any thread.
#pragma once

#include <string_view>

namespace host {

// The upper-case form of a code unit, or the unit itself.
char16_t FoldFileNameUnit(char16_t unit);
bool SameFileName(std::u16string_view a, std::u16string_view b);

// Below, at or above 0, by the folded units in order.
int CompareFolded(std::u16string_view a, std::u16string_view b);

struct FoldedLess {
    bool operator()(std::u16string_view a, std::u16string_view b) const {
        return CompareFolded(a, b) < 0;
    }
};

}  // namespace host
