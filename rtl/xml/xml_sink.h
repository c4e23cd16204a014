// Where the writer puts its text: collected in large pieces and handed on to a stream, or kept for
// a string.
#pragma once

#include <windows.h>

#include <string>

#include "mox_classes/unicode_string.h"
#include "xml/xml_writer.h"

// Text that is still held when the sink is destroyed is lost: Finish hands it on. Stream exceptions
// pass through.
class TXmlSink {
  public:
    // Without a stream the text is kept and Finish appends it to `out`.
    TXmlSink(Classes::TStream* stream, UnicodeString* out, TCodePage code_page)
        : stream_(stream), out_(out), code_page_(code_page) {}
    TXmlSink(const TXmlSink&) = delete;
    TXmlSink& operator=(const TXmlSink&) = delete;

    void Put(const UnicodeString& text) { PutRun(text.t_str(), text.Length()); }
    void Put(const WCHAR* text) { text_.append(text); }
    // Trimmed and escaped; the number of lines of the text.
    int PutEscaped(const UnicodeString& text);
    // Hands on what has come together, when that is worth a write. Between two elements.
    void Checkpoint();
    // Hands on the rest; the bytes that the stream took, or the code units, at most 2147483647.
    int Finish();

  private:
    void PutRun(const WCHAR* text, int length);

    Classes::TStream* stream_;
    UnicodeString* out_;
    TCodePage code_page_;
    std::basic_string<WCHAR> text_;
    long long written_ = 0;
};
