#include "text/host_text.h"

#include <algorithm>

#include "text/utf8.h"

namespace host {

std::string ToUtf8(WideView text) {
    std::string result(WideToUtf8(text, nullptr, 0, false).length, '\0');
    WideToUtf8(text, result.data(), result.size(), false);
    return result;
}

WideString FromUtf8(std::string_view text) {
    WideString result(Utf8ToWide(text, nullptr, 0, false).length, 0);
    Utf8ToWide(text, result.data(), result.size(), false);
    return result;
}

WideView ViewOf(LPCWSTR text) {
    return text == nullptr ? WideView() : WideView(text);
}

DWORD CopyOut(WideView text, LPWSTR buffer, DWORD size) {
    if (buffer == nullptr || size <= text.size()) return static_cast<DWORD>(text.size() + 1);
    std::copy(text.begin(), text.end(), buffer);
    buffer[text.size()] = 0;
    return static_cast<DWORD>(text.size());
}

}  // namespace host
