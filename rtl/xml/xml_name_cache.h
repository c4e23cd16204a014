// The names of a document while it is parsed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "mox_classes/text/unicode_string.h"
#include "xml/char_finder.h"

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
