// How the strings of the library look in a failed comparison: ASCII as it is, the rest as \uXXXX.
#pragma once

#include <gtest/gtest.h>

#include <iomanip>
#include <ostream>
#include <string>

#include "mox_classes/text/unicode_string.h"

namespace System {

inline void PrintTo(const UnicodeString& s, std::ostream* out) {
    *out << (s.IsEmpty() ? "null" : "\"");
    for (int i = 1; i <= s.Length(); ++i) {
        const unsigned int unit = s[i];
        if (unit >= 0x20 && unit < 0x7F) {
            *out << static_cast<char>(unit);
        } else {
            *out << "\\u" << std::hex << std::setw(4) << std::setfill('0') << unit << std::dec;
        }
    }
    if (!s.IsEmpty()) *out << '"';
}

}  // namespace System

namespace test {

inline std::string Shown(const WCHAR* text) {
    return testing::PrintToString(UnicodeString(text));
}

}  // namespace test
