// What the parser holds during one parse.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "xml/char_finder.h"
#include "xml/xml_name_cache.h"
#include "xml/xml_text.h"

// The parser's character classes.
struct TXmlSearchSets {
    TXmlSearchSets() { Significant.NoneControl(1); }

    TSearchSet Significant;  // neither blank nor control
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
