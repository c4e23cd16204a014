// UTF-8 to UTF-16 and back over counted buffers.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string_view>

namespace host {

// What a conversion gave: the units written (or needed, when there was no buffer), or a Win32
// error.
struct Conversion {
    std::size_t length;
    DWORD error;
};

// Without a buffer (null) the units are counted only. `strict` fails with
// ERROR_NO_UNICODE_TRANSLATION on the first ill-formed input; else each maximal ill-formed part
// becomes one U+FFFD. A buffer that is too short: ERROR_INSUFFICIENT_BUFFER.
Conversion Utf8ToWide(std::string_view text, WCHAR* buffer, std::size_t size, bool strict);
Conversion WideToUtf8(std::basic_string_view<WCHAR> text, char* buffer, std::size_t size,
                      bool strict);

}  // namespace host
