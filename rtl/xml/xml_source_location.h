// Locations in an XML text as people look for them: line, column, and the line itself with a caret.
#pragma once

#include <windows.h>

#include <optional>
#include <string_view>

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"
#include "xml/xml_decode.h"

class TXmlDoc;

// Line and column count from 1. A column is a character; a tab is one too. Lines end with LF, CR LF
// or CR.
struct TXmlSourceLocation {
    int line = 1;
    int column = 1;
    // The part of the line around the location, a line feed, and a line with a caret below the
    // location. Characters that a terminal cannot show become U+FFFD; tabs stay. Null when the line
    // is empty.
    UnicodeString shown;

    // "line 3, column 7".
    UnicodeString Name() const;
};

// Finds locations in one text. Ascending positions are found in one pass.
class TXmlSourceText {
  public:
    // The bytes that TXmlDoc::Parse got, and the code page that it found. The caller keeps the
    // bytes until the object is gone.
    TXmlSourceText(const void* bytes, int size, System::TCodePage code_page);

    // The text that the parser scans: the bytes, or the UTF-8 form of UTF-16 and UTF-32.
    std::string_view Text() const { return text_; }
    // The location of a byte position of the input; a position behind the end means the end.
    TXmlSourceLocation Find(int position);
    // The same for a byte position of Text().
    TXmlSourceLocation FindInText(int position);

  private:
    std::size_t LineEnd() const;
    UnicodeString Show(std::size_t at) const;

    const unsigned char* bytes_;
    int mark_;  // bytes of the byte-order mark
    System::TCodePage code_page_;
    std::optional<TXmlDecodedText> decoded_;
    std::string_view text_;
    // How far the search has come, and its line and column there.
    std::size_t at_ = 0;
    std::size_t line_start_ = 0;
    int line_ = 1;
    int column_ = 1;
};

// Where and why the document's last parse of the bytes failed: "line 3, column 7: reason" and the
// line with a caret below. `place`, when given, receives the location. Null when the parse did not
// fail.
QV_API UnicodeString DescribeXmlFault(const TXmlDoc& document, const void* bytes, int size,
                                      TXmlSourceLocation* place);
