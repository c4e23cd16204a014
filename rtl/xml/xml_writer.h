// Layout and output of the XML writer: indentation, line breaks, escaping, and text to a stream.
// The tree is written by SaveTo and its kin of TXmlNode and TXmlDoc.
#pragma once

#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

class TXmlNode;

namespace Classes {
class TStream;
}
using System::TCodePage;

// Steers one writer at a time: its level changes while a subtree is written. Plain value.
class QV_API TXmlFormatter {
  public:
    TXmlFormatter() = default;
    TXmlFormatter(const UnicodeString& unit, const UnicodeString& line_break, int level) {
        Set(unit, line_break, level);
    }

    // A level below -1 leaves the level as it is.
    void Set(const UnicodeString& unit, const UnicodeString& line_break, int level);
    // The unit repeated level times; null at level -1. Throws "Out of length" when that passes the
    // longest string.
    UnicodeString Indent();
    UnicodeString LineBreak() const { return FLineBreak; }
    int GetLevel() const { return FLevel; }
    void SetLevel(int level) { FLevel = level; }
    // Adds delta unless the level would fall below -1; the level.
    int IncLevel(int delta);

  protected:
    friend class TXmlNode;

    UnicodeString FIndentCache;
    UnicodeString FIndentUnit;
    UnicodeString FLineBreak;
    int FLevel = 0;  // -1 selects the form of processing instructions
};

// Writes text in UTF-8 (65001 or 0) or UTF-16 (1200); nothing in another code page. What the
// stream's Write returned.
QV_API int UnicodeStringToStream(Classes::TStream* stream, const UnicodeString& text,
                                 TCodePage code_page);
