// Text helpers of the host layer's own code: UTF-8 for the Linux side, UTF-16 for the Win32 side.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace host {

using WideView = std::basic_string_view<WCHAR>;
using WideString = std::basic_string<WCHAR>;

// Conversions. Unpaired surrogates and invalid bytes become U+FFFD.
std::string ToUtf8(WideView text);
WideString FromUtf8(std::string_view text);

// The text as a view; null is empty.
WideView ViewOf(LPCWSTR text);

// Copies `text` with its zero to `buffer` of `size` units. Returns the length without the zero, or,
// when it does not fit, the needed size with the zero, as GetTempPathW and similar calls do.
DWORD CopyOut(WideView text, LPWSTR buffer, DWORD size);

}  // namespace host
