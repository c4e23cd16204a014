// Conversion between UTF-16 and narrow text: checks of the calls' arguments, choice of the page.
#include <windows.h>

#include <climits>
#include <cstring>

#include "text/code_page.h"
#include "text/host_text.h"
#include "text/utf8.h"

using namespace host;

namespace {

UINT ActualPage(UINT code_page) {
    return code_page == CP_ACP ? AnsiCodePage() : code_page;
}

template <class From, class To>
DWORD CheckArguments(const From* text, int count, const To* buffer, int size) {
    const bool bad = text == nullptr || count == 0 || size < 0 ||
                     (buffer == nullptr && size != 0) ||
                     static_cast<const void*>(text) == static_cast<const void*>(buffer);
    return bad ? ERROR_INVALID_PARAMETER : NO_ERROR;
}

// The text of the caller: `count` units, or up to and with the terminating zero when the count is
// negative.
template <class Unit>
std::basic_string_view<Unit> SourceText(const Unit* text, int count) {
    const std::size_t length =
        count >= 0 ? static_cast<std::size_t>(count) : std::char_traits<Unit>::length(text) + 1;
    return {text, length};
}

int Answer(Conversion conversion) {
    if (conversion.error == NO_ERROR && conversion.length > INT_MAX) {
        conversion.error = ERROR_INVALID_PARAMETER;
    }
    if (conversion.error == NO_ERROR) return static_cast<int>(conversion.length);
    SetLastError(conversion.error);
    return 0;
}

int Refuse(DWORD error) {
    return Answer({0, error});
}

}  // namespace

int MultiByteToWideChar(UINT code_page, DWORD flags, LPCSTR text, int bytes, LPWSTR buffer,
                        int size) {
    if (const DWORD error = CheckArguments(text, bytes, buffer, size)) return Refuse(error);
    const UINT page = ActualPage(code_page);
    const DWORD allowed =
        page == CP_UTF8 ? MB_ERR_INVALID_CHARS : MB_ERR_INVALID_CHARS | MB_PRECOMPOSED;
    if ((flags & ~allowed) != 0) return Refuse(ERROR_INVALID_FLAGS);
    const bool strict = (flags & MB_ERR_INVALID_CHARS) != 0;
    WCHAR* target = size == 0 ? nullptr : buffer;
    const auto room = static_cast<std::size_t>(size);
    if (page == CP_UTF8) return Answer(Utf8ToWide(SourceText(text, bytes), target, room, strict));
    const auto narrow = OpenNarrowPage(page);
    if (narrow == nullptr) return Refuse(ERROR_INVALID_PARAMETER);
    return Answer(NarrowToWide(*narrow, SourceText(text, bytes), target, room, strict));
}

int WideCharToMultiByte(UINT code_page, DWORD flags, LPCWSTR text, int length, LPSTR buffer,
                        int size, LPCSTR default_char, LPBOOL used_default) {
    if (const DWORD error = CheckArguments(text, length, buffer, size)) return Refuse(error);
    const UINT page = ActualPage(code_page);
    char* target = size == 0 ? nullptr : buffer;
    const auto room = static_cast<std::size_t>(size);
    if (page == CP_UTF8) {
        if (default_char != nullptr || used_default != nullptr) {
            return Refuse(ERROR_INVALID_PARAMETER);
        }
        if ((flags & ~static_cast<DWORD>(WC_ERR_INVALID_CHARS)) != 0) {
            return Refuse(ERROR_INVALID_FLAGS);
        }
        return Answer(WideToUtf8(SourceText(text, length), target, room, flags != 0));
    }
    if ((flags & ~static_cast<DWORD>(WC_NO_BEST_FIT_CHARS)) != 0)
        return Refuse(ERROR_INVALID_FLAGS);
    const auto narrow = OpenNarrowPage(page);
    if (narrow == nullptr) return Refuse(ERROR_INVALID_PARAMETER);
    bool used = false;
    const std::string_view fallback =
        default_char == nullptr ? "?" : std::string_view(default_char, strnlen(default_char, 2));
    const Conversion result =
        WideToNarrow(*narrow, SourceText(text, length), target, room, fallback, used);
    if (used_default != nullptr && result.error == NO_ERROR) *used_default = used ? TRUE : FALSE;
    return Answer(result);
}

LPSTR CharNextA(LPCSTR text) {
    if (*text == 0) return const_cast<LPSTR>(text);
    const bool pair = IsLeadByte(AnsiCodePage(), *text) && text[1] != 0;
    return const_cast<LPSTR>(text + (pair ? 2 : 1));
}
