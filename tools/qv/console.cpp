#include "console.h"

#include <cstdio>
#include <limits>

namespace qv {

UnicodeString FromUtf8(const std::string& text) {
    UnicodeString result;
    if (text.empty()) return result;
    if (text.size() > std::numeric_limits<int>::max()) throw Failure("text too long");
    const int bytes = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    result.SetLength(units);
    MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, result.data(), units);
    return result;
}

std::string ToUtf8(const UnicodeString& text) {
    std::string result;
    const int length = text.Length();
    if (length == 0) return result;
    const int bytes =
        WideCharToMultiByte(CP_UTF8, 0, text.t_str(), length, nullptr, 0, nullptr, nullptr);
    result.resize(static_cast<std::size_t>(bytes));
    WideCharToMultiByte(CP_UTF8, 0, text.t_str(), length, result.data(), bytes, nullptr, nullptr);
    return result;
}

std::string OneLine(const UnicodeString& text) {
    std::string line;
    for (const char c : ToUtf8(text)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            line += c;
        } else if (c == '\t') {
            line += "\\t";
        } else if (c == '\n') {
            line += "\\n";
        } else if (c == '\r') {
            line += "\\r";
        } else {
            constexpr char kDigits[] = "0123456789ABCDEF";
            line += "\\x";
            line += kDigits[byte >> 4];
            line += kDigits[byte & 15];
        }
    }
    return line;
}

void Print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        throw Failure("cannot write to standard output");
    }
}

void PrintLine(const std::string& text) {
    Print(text + "\n");
}

void PrintError(const std::string& text) {
    std::fputs(("qv: " + text + "\n").c_str(), stderr);
}

}  // namespace qv
