// Pages of docs/ as text, for tests that compare them with tables of the library.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include "support/source_folder.h"

namespace test {

inline std::string PageText(const std::string& path) {
    std::ifstream file(SourceFolder() + "/docs/" + path);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// What stands between the first `begin` and the next `end` behind it; empty without them.
inline std::string Between(const std::string& text, const std::string& begin,
                           const std::string& end) {
    const std::size_t at = text.find(begin);
    if (at == std::string::npos) return "";
    const std::size_t from = at + begin.size();
    return text.substr(from, text.find(end, from) - from);
}

/// A name or text of ASCII.
template <class Unit>
std::string Ascii(std::basic_string_view<Unit> text) {
    std::string ascii;
    for (const Unit unit : text) ascii += static_cast<char>(unit);
    return ascii;
}

}  // namespace test
