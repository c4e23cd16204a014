// Tables of cases that lie beside the tests as text files.
#pragma once

#include <cstdlib>
#include <string>

namespace test {

/// "\n", "\r", "\t" and "\xHH" are what they are in C++; "{x*9}" is nine times x.
inline std::string Unescaped(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (text[i] == '{' && text.substr(i + 2, 1) == "*") {
            bytes.append(std::strtoul(text.c_str() + i + 3, nullptr, 10), next);
            i = text.find('}', i + 2);
        } else if (text[i] == '\\' && next == 'x') {
            bytes += static_cast<char>(std::strtoul(text.substr(i + 2, 2).c_str(), nullptr, 16));
            i += 3;
        } else if (text[i] == '\\' && (next == 'n' || next == 'r' || next == 't')) {
            bytes += next == 'n' ? '\n' : next == 'r' ? '\r' : '\t';
            ++i;
        } else {
            bytes += text[i];
        }
    }
    return bytes;
}

/// Whether the text is the pattern, in which "<*>" stands for any bytes.
inline bool Matches(const std::string& pattern, const std::string& text) {
    const std::size_t any = pattern.find("<*>");
    if (any == std::string::npos) return text == pattern;
    if (text.substr(0, any) != pattern.substr(0, any)) return false;
    for (std::size_t at = any; at <= text.size(); ++at)
        if (Matches(pattern.substr(any + 3), text.substr(at))) return true;
    return false;
}

}  // namespace test
