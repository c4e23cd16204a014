// A growing index over the names of an item list: which item is the first of a name, and which is
// the next of the same name.
#pragma once

#include <cstdint>
#include <vector>

#include "mox_classes/text/unicode_string.h"

class TXmlPair;

// Open addressing, at most half full, over a hash of its own that spreads well; items of one name
// share one entry and are chained in insertion order, so masses of equal names cost nothing. Only
// items handed to Extend are known.
//
// The index shares the buffers of the names it knows. A name that is changed in any way has another
// buffer afterwards, so renamed items show without comparing texts.
class TXmlNameIndex {
  public:
    // Takes the items from the number known so far up to `count`. When there are such items, those
    // known before are checked, and all are taken anew if one was renamed. Above 1024 items the
    // check waits for one more addition for each 1024.
    void Extend(TXmlPair* const* items, int count);
    // The first item of that name, -1 when there is none.
    int First(TXmlPair* const* items, const UnicodeString& name) const;
    // The next item of that name behind item `index`, -1 when there is none.
    int Next(TXmlPair* const* items, const UnicodeString& name, int index) const;

  private:
    struct Entry {
        std::uint32_t hash = 0;
        std::int32_t first = -1;  // -1 marks a free entry
        std::int32_t last = -1;
    };

    struct TKnown {
        UnicodeString name;
        std::int32_t next;  // the next item of this name, or -1
    };

    bool IsRenamed(TXmlPair* const* items) const;
    void Clear();
    void Insert(TXmlPair* const* items, std::int32_t index);
    void Grow();

    std::vector<Entry> entries_;  // a power of two, or none
    std::vector<TKnown> known_;   // for each item
    std::size_t used_ = 0;
    std::size_t checked_ = 0;  // the number of items at the last check
    std::uint64_t seed_ = 0;
};

// Equal code units, embedded zeros included.
bool XmlNamesEqual(const UnicodeString& a, const UnicodeString& b);
