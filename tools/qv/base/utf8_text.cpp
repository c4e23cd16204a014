#include "base/utf8_text.h"

#include <cstdio>
#include <limits>
#include <string_view>

#include "base/exit_code.h"

namespace qv {

namespace {

// Units that make a terminal act or a line read otherwise than it is: controls, line separators and
// the marks that turn the direction of writing.
bool IsHarmful(unsigned unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x061C || unit == 0x200E ||
           unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

std::string Escaped(unsigned unit) {
    switch (unit) {
        case '\t':
            return "\\t";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        default:
            break;
    }
    char text[8];
    std::snprintf(text, sizeof(text), unit < 0x100 ? "\\x%02X" : "\\u%04X", unit);
    return text;
}

// `text` with its harmful units escaped, but for those that `kept` holds.
std::string EscapeControls(const UnicodeString& text, std::string_view kept) {
    UnicodeString line;
    int done = 0;
    for (int i = 0; i < text.Length(); ++i) {
        const unsigned unit = text.t_str()[i];
        if (!IsHarmful(unit)) continue;
        if (unit < 0x80 && kept.find(static_cast<char>(unit)) != std::string_view::npos) continue;
        line += text.SubString(done + 1, i - done);
        line += FromUtf8(Escaped(unit));
        done = i + 1;
    }
    return ToUtf8(line + text.SubString(done + 1, text.Length() - done));
}

}  // namespace

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
    return EscapeControls(text, {});
}

std::string Lines(const UnicodeString& text) {
    return EscapeControls(text, "\n\t");
}

}  // namespace qv
