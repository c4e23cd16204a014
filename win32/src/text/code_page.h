// Narrow code pages other than UTF-8: 1252 by our own table, the rest through the C library.
#pragma once

#include <windows.h>

#include <memory>

#include "text/utf8.h"

namespace host {

// Translates between one code page and UTF-16, character by character. Not for two threads at once.
class NarrowPage {
  public:
    static constexpr WCHAR kNone = 0xFFFF;

    virtual ~NarrowPage() = default;
    // Decodes the first character of `text`, which is not empty. kNone when the bytes are no
    // character. `used` receives its size in bytes, 1 or 2.
    virtual WCHAR Decode(std::string_view text, std::size_t& used) = 0;
    // Writes the bytes of one unit, at most 2. Returns how many; 0 when the page does not have the
    // unit.
    virtual std::size_t Encode(WCHAR unit, char* bytes) = 0;
};

// Null when this host does not know the page.
std::unique_ptr<NarrowPage> OpenNarrowPage(UINT code_page);

// Whether a character of two bytes begins with this byte.
bool IsLeadByte(UINT code_page, char byte);

// The ANSI code page of the host root.
UINT AnsiCodePage();

// Strict as in utf8.h; otherwise bytes that are no character become '?'.
Conversion NarrowToWide(NarrowPage& page, std::string_view text, WCHAR* buffer, std::size_t size,
                        bool strict);
// A unit that the page does not have becomes `fallback` and sets `used_fallback`.
Conversion WideToNarrow(NarrowPage& page, std::basic_string_view<WCHAR> text, char* buffer,
                        std::size_t size, std::string_view fallback, bool& used_fallback);

}  // namespace host
