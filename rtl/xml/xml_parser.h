// What the parser holds during one parse.
#pragma once

#include <windows.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "xml/char_finder.h"

// The parser's character classes.
struct TXmlSearchSets {
    TXmlSearchSets() { Significant.NoneControl(1); }

    TSearchSet Significant;  // neither blank nor control
};

// Element and attribute names, so that equal names of a document share one buffer: three quarters
// of the time of a name is its allocation. It starts over when it is full, so that a document with
// ever new names costs no memory.
class TXmlNameCache {
  public:
    // The trimmed bytes, decoded; null when nothing is left. They lie in the scanned buffer, which
    // outlives the cache.
    UnicodeString Get(const TAsciiCharFinder& finder, int from, int to);

  private:
    struct Entry {
        std::string_view bytes;
        UnicodeString name;
    };
    static constexpr std::size_t kMost = 255;

    // Open addressing, at most half full: 1 + an index of entries_, or 0.
    std::array<unsigned char, 512> slots_{};
    std::vector<Entry> entries_;
};

struct TXmlParseState {
    TXmlNameCache names;
    std::basic_string<WCHAR> pieces;  // a text with references, as far as it has been read
    bool in_attributes = false;
    bool bare_name = false;  // the attributes ended at a name without '='
};
