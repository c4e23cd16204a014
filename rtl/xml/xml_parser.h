// What the parser holds during one parse.
#pragma once

#include <windows.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "xml/char_finder.h"
#include "xml/xml_text.h"

// The parser's character classes.
struct TXmlSearchSets {
    TXmlSearchSets() { Significant.NoneControl(1); }

    TSearchSet Significant;  // neither blank nor control
};

// Element and attribute names, so that equal names of a document share one buffer and are decoded
// once. It starts over when it is full, so that a document with ever new names costs no memory.
class TXmlNameCache {
  public:
    // The trimmed bytes, decoded; null when nothing is left. They lie in the scanned buffer, which
    // outlives the cache.
    UnicodeString Get(const TAsciiCharFinder& finder, int from, int to);
    // The same for bytes without blanks at their ends, at least one.
    const UnicodeString& GetTrimmed(const TAsciiCharFinder& finder, int from, int to);

  private:
    // Both ends of a name, as far as it goes; up to twice eight bytes they are the whole name.
    struct Key {
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        std::string_view bytes;

        bool operator==(const Key& other) const;
    };
    struct Entry {
        Key key;
        UnicodeString name;
    };
    static constexpr std::size_t kMost = 255;

    static Key KeyOf(const TAsciiCharFinder& finder, int from, int to);
    static std::size_t HomeOf(const Key& key);

    // Open addressing, at most half full: 1 + an index of entries_, or 0.
    std::array<unsigned char, 512> slots_{};
    std::vector<Entry> entries_;
};

// Where the name of an open element stands in its start tag.
struct TXmlNameSpan {
    int from;
    int length;
};

struct TXmlParseState {
    // cppcheck-suppress uninitMemberVar ; the text writes its room before it reads it
    explicit TXmlParseState(bool takes_utf8) : utf8(takes_utf8) {}

    TXmlNameCache names;
    TXmlText text;
    const bool utf8;  // the input's characters are passed over as UTF-8 or byte by byte
    std::vector<TXmlNameSpan> open;   // the elements that this parse has opened
    std::basic_string<WCHAR> pieces;  // a text with references, as far as it has been read
    int key_end = 0;                  // where the last key ended
    bool in_attributes = false;
    bool bare_name = false;  // the attributes ended at a name without '='
};
