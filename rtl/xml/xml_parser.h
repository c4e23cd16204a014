// The parser: one forward pass over the bytes that fills a document.
//
// TXmlDoc::Parse makes one for each parse and calls ParseElements; each step below reads one piece
// of the grammar and leaves the scanner behind it. docs/xml.md describes the grammar.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "xml/char_finder.h"
#include "xml/xml_doc.h"
#include "xml/xml_name_cache.h"
#include "xml/xml_text.h"

// The parser's character classes.
struct TXmlSearchSets {
    TXmlSearchSets() { Significant.NoneControl(1); }

    TSearchSet Significant;  // neither blank nor control
};

// Works on the document and the scanner that it was made with, which outlive it; the document's
// cursor and fault are kept there. One thread. A step returns 0 to go on, or what Parse is to
// return: the position behind the root's end tag, or the negated position of an error.
class TXmlParser {
  public:
    TXmlParser(TXmlDoc& document, TAsciiCharFinder& finder);
    ~TXmlParser();
    TXmlParser(const TXmlParser&) = delete;
    TXmlParser& operator=(const TXmlParser&) = delete;

    int ParseElements();
    // A name up to a blank, '=', '<', '>' or `end`; null at the end of the input.
    UnicodeString ParseKey(char end);
    // The position where the attributes end, or an error.
    int ParseAttributes(char end);
    // Appends to `text`; the position where the text ends, or an error.
    int ParseText(UnicodeString& text, bool in_attribute);

    // Notes the reason of an error at the scanner's position, and gives Parse's result for it.
    int Fail(const UnicodeString& reason);
    int Error() const;

  private:
    // Where the name of an open element stands in its start tag.
    struct TNameSpan {
        int from;
        int length;
    };

    int ParseInstruction();
    void SkipComment();
    int ParseStartTag();
    bool TakeLeaf(int length);
    int ParseEndTag();
    bool SkipNameOfOpen();
    int CloseElement();
    int ParseTail();
    const UnicodeString& TakeKey(int length);
    int ParseAttribute(char end);
    bool TakeAttribute(char tag_end);
    int ParsePieces(UnicodeString& text, bool in_attribute);
    int ReadPieces(UnicodeString& text, bool in_attribute);
    void TellPassed(int from);
    int FailAtOpen(const UnicodeString& reason);
    int FailWithout(const UnicodeString& reason);
    int FailWithoutAttributeName();

    TXmlDoc& doc_;
    TAsciiCharFinder& finder_;
    const TXmlSearchSets& sets_;
    TXmlNameCache names_;
    TXmlText text_;
    const bool utf8_;  // the input's characters are passed over as UTF-8 or byte by byte
    std::vector<TNameSpan> open_;      // the elements that this parse has opened
    std::basic_string<WCHAR> pieces_;  // a text with references, as far as it has been read
    int key_end_ = 0;                  // where the last key ended
    bool in_attributes_ = false;
    bool bare_name_ = false;  // the attributes ended at a name without '='
};
