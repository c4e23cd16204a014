// The text of an element or attribute as most of them are: well-formed, not long, with named
// references at most.
#pragma once

#include <windows.h>

#include "mox_classes/text/unicode_string.h"

// Finds the end of a text and decodes it in the same pass, onto the stack, so that the exact string
// can be made at once: half the time of finding, measuring and decoding one after the other.
class TXmlText {
  public:
    // Decodes up to the terminator, '<' or '"', and returns where that stands. Null for whatever
    // takes more than this: errors, other references, long texts; and, unless `utf8`, for what is
    // not ASCII.
    template <char terminator>
    const unsigned char* Decode(const unsigned char* at, const unsigned char* end, bool utf8);
    // The text decoded last; null when it is empty.
    UnicodeString Whole() const { return UnicodeString(units_, end_ - units_); }
    UnicodeString Trimmed() const;

  private:
    static constexpr int kMost = 1024;
    static constexpr int kStep = 16;  // what one turn may write

    WCHAR units_[kMost + kStep];
    WCHAR* end_ = units_;
};
