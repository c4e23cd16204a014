// Texts of the library as the tool shows and takes them: UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "mox_classes/text/unicode_string.h"

namespace qv {

using Units = std::basic_string_view<WCHAR>;
// Valid as long as the text is.
inline Units UnitsOf(const UnicodeString& text) {
    return {text.t_str(), static_cast<std::size_t>(text.Length())};
}

UnicodeString FromUtf8(const std::string& text);
std::string ToUtf8(const UnicodeString& text);
void AddUtf8(std::string& out, Units text);

// The text on one line. Control characters and marks of writing direction are escaped as \t, \n,
// \r, \xNN and \uNNNN, so that a text cannot control the terminal.
std::string OneLine(const UnicodeString& text);
void AddOneLine(std::string& out, Units text);
// The same between single quotes, as messages name things.
std::string Quoted(const UnicodeString& text);
std::string Quoted(const std::string& utf8);
// The same for a text of several lines: line feeds and tabs stay.
std::string Lines(const UnicodeString& text);

// "[5]Access is denied.": the code and the system's text for it.
std::string SystemText(DWORD code);

}  // namespace qv
