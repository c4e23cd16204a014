// Texts of the library as the tool shows and takes them: UTF-8.
#pragma once

#include <string>

#include "mox_classes/text/unicode_string.h"

namespace qv {

UnicodeString FromUtf8(const std::string& text);
std::string ToUtf8(const UnicodeString& text);

// The text on one line, with what makes a terminal act or turns the direction of writing made
// harmless: tab, line break and the like as \t, \n, \r, \xNN, \uNNNN.
std::string OneLine(const UnicodeString& text);
// The same for a text of several lines, whose line feeds and tabs stay.
std::string Lines(const UnicodeString& text);

}  // namespace qv
