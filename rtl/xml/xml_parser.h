// What the parser holds during one parse.
#pragma once

#include <array>
#include <string_view>

#include "xml/char_finder.h"

// The parser's character classes. Tag changes while a key or attributes are read.
struct TXmlSearchSets {
    TXmlSearchSets();

    TSearchSet Tag;          // '<' '>'; in a key also ' ' '=' and its end, in attributes also '"'
    TSearchSet Text;         // '"' '&' ';' '<' '>'
    TSearchSet Significant;  // neither blank nor control
};

// Element and attribute names, so that equal names of a document share one buffer. It remembers the
// latest name for each of a fixed number of hashes: a document with ever new names costs no memory.
class TXmlNameCache {
  public:
    // The trimmed bytes, decoded; null when nothing is left. `key` lies in the scanned buffer.
    UnicodeString Get(const TAsciiCharFinder& finder, int from, int to);

  private:
    struct Entry {
        std::string_view bytes;
        UnicodeString name;
    };
    std::array<Entry, 256> entries_;
};

// Adds a byte to a set for as long as it lives.
class TMemberFor {
  public:
    TMemberFor(TSearchSet& set, char octet)
        : entry_(set[static_cast<unsigned char>(octet)]), before_(entry_) {
        entry_ = 1;
    }
    ~TMemberFor() { entry_ = before_; }
    TMemberFor(const TMemberFor&) = delete;
    TMemberFor& operator=(const TMemberFor&) = delete;

  private:
    unsigned char& entry_;
    unsigned char before_;
};
