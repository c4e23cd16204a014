// UTF-16 and UTF-32 input as UTF-8, which is what the parser reads, and positions back.
#pragma once

#include <string>

#include "mox_classes/text/code_page.h"

bool IsWideCodePage(System::TCodePage code_page);

// The text of `size` bytes in one of the four wide encodings. Unpaired surrogates and numbers above
// 0x10FFFF become U+FFFD; an incomplete unit at the end is left out.
class TXmlDecodedText {
  public:
    // `bytes` must outlive the object. A text above 2 GiB - 1 in UTF-8 throws "Out of length".
    TXmlDecodedText(const unsigned char* bytes, int size, System::TCodePage code_page);

    const char* Data() const { return utf8_.data(); }
    int Size() const { return static_cast<int>(utf8_.size()); }
    // The position in the original bytes of the character that holds position `at` of the text.
    int Original(int at) const;

  private:
    // The code point at `at`, which moves behind it; false at the end.
    bool Next(int& at, char32_t& point) const;
    bool Unit(int& at, char32_t& unit) const;

    const unsigned char* bytes_;
    int size_;
    int width_;  // bytes of a unit
    bool big_endian_;
    std::string utf8_;
};
