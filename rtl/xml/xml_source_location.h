// Places in an XML text as people look for them: line, column, and the line itself with a caret.
#pragma once

#include <windows.h>

#include <optional>
#include <string_view>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"
#include "xml/xml_decode.h"

class TXmlDoc;

// Both count from 1. A column is a character, a tab too; lines end with LF, CR LF or CR.
struct TXmlSourceLocation {
    int line = 1;
    int column = 1;
    // The line, cut to what lies around the place, a line feed, and a line with a caret below the
    // place. Every character that is not a plain one stands as U+FFFD, tabs stay. Null when there
    // is nothing on the line.
    UnicodeString shown;

    // "line 3, column 7".
    UnicodeString Name() const;
};

// The places of one text. Ascending positions are found in one pass over it.
class TXmlSourceText {
  public:
    // The bytes that TXmlDoc::Parse got, and the code page that it found. They must outlive the
    // object.
    TXmlSourceText(const void* bytes, int size, System::TCodePage code_page);

    // What the parser scans: the bytes, or the UTF-8 form of UTF-16 and UTF-32.
    std::string_view Text() const { return text_; }
    // A byte position of the input; one behind the end is the end.
    TXmlSourceLocation Find(int position);
    // A byte position of Text().
    TXmlSourceLocation FindInText(int position);

  private:
    std::size_t LineEnd() const;
    UnicodeString Show(std::size_t at) const;

    const unsigned char* bytes_;
    int mark_;  // bytes of the byte-order mark
    System::TCodePage code_page_;
    std::optional<TXmlDecodedText> decoded_;
    std::string_view text_;
    // How far the search has come, and what it knows of that position.
    std::size_t at_ = 0;
    std::size_t line_start_ = 0;
    int line_ = 1;
    int column_ = 1;
};

// Where the document's last parse of the bytes failed, and why: "line 3, column 7: reason" and the
// line with a caret below. `place`, when given, is that place. Null when the parse did not fail.
QV_API UnicodeString DescribeXmlFault(const TXmlDoc& document, const void* bytes, int size,
                                      TXmlSourceLocation* place);
