#include "base/value_text.h"

#include <charconv>
#include <cstdio>
#include <limits>

namespace qv {

namespace {

constexpr int kHexDigits = 4;

bool IsLead(WCHAR unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool IsTrail(WCHAR unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

// The number of units of the character at `i`: 1, or 2 for a surrogate pair; 0 for half a pair.
int UnitsOfCharacter(const UnicodeString& text, int i) {
    const WCHAR unit = text.t_str()[i];
    if (!IsLead(unit) && !IsTrail(unit)) return 1;
    return IsLead(unit) && i + 1 < text.Length() && IsTrail(text.t_str()[i + 1]) ? 2 : 0;
}

// Adds a printable character as it is, any other as an escape.
std::string Escaped(const UnicodeString& text, int i, int units) {
    if (units > 0) {
        const UnicodeString character = text.SubString(i + 1, units);
        const std::string utf8 = ToUtf8(character);
        if (utf8 == "\"" || utf8 == "\\") return "\\" + utf8;
        const std::string shown = OneLine(character);
        if (shown == utf8 || shown.size() == 2) return shown;
    }
    char escape[8];
    std::snprintf(escape, sizeof(escape), "\\u%04X",
                  unsigned{static_cast<std::uint16_t>(text.t_str()[i])});
    return escape;
}

std::optional<UnicodeString> StrictUtf8(const std::string& text) {
    if (text.empty()) return UnicodeString();
    if (text.size() > std::numeric_limits<int>::max()) return {};
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                            static_cast<int>(text.size()), nullptr, 0) == 0) {
        return {};
    }
    return FromUtf8(text);
}

// Reads the escape at `at` and moves `at` behind it.
std::optional<WCHAR> ReadEscape(const std::string& text, std::size_t& at) {
    const char kind = at < text.size() ? text[at++] : '\0';
    switch (kind) {
        case '"':
        case '\\':
            return static_cast<WCHAR>(kind);
        case 't':
            return WCHAR{'\t'};
        case 'n':
            return WCHAR{'\n'};
        case 'r':
            return WCHAR{'\r'};
        case 'u':
            break;
        default:
            return {};
    }
    if (text.size() - at < kHexDigits) return {};
    unsigned unit = 0;
    const char* const end = text.data() + at + kHexDigits;
    const auto parsed = std::from_chars(text.data() + at, end, unit, 16);
    if (parsed.ec != std::errc() || parsed.ptr != end) return {};
    at += kHexDigits;
    return static_cast<WCHAR>(unit);
}

// `text` without its outer quotes.
std::optional<UnicodeString> Unescape(const std::string& text) {
    UnicodeString value;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find_first_of("\"\\", at), text.size());
        const auto plain = StrictUtf8(text.substr(at, end - at));
        if (!plain) return {};
        value += *plain;
        at = end;
        if (at == text.size()) break;
        if (text[at++] == '"') return {};
        const auto unit = ReadEscape(text, at);
        if (!unit) return {};
        value += UnicodeString(*unit);
    }
    return value;
}

}  // namespace

std::string ToValueText(const UnicodeString& value) {
    std::string bare, escaped;
    bool is_plain = true;
    for (int i = 0; i < value.Length();) {
        const int units = UnitsOfCharacter(value, i);
        const std::string as_is = ToUtf8(value.SubString(i + 1, units));
        const std::string character = Escaped(value, i, units);
        is_plain = is_plain && (character == as_is || as_is == "\"" || as_is == "\\");
        bare += as_is;
        escaped += character;
        i += std::max(units, 1);
    }
    const bool can_be_bare = is_plain && Trimmed(bare) == bare && bare.substr(0, 1) != "\"";
    return can_be_bare ? bare : "\"" + escaped + "\"";
}

std::optional<UnicodeString> FromValueText(const std::string& text) {
    const std::string value = Trimmed(text);
    if (value.substr(0, 1) != "\"") return StrictUtf8(value);
    if (value.size() < 2 || value.back() != '"') return {};
    return Unescape(value.substr(1, value.size() - 2));
}

std::string Trimmed(const std::string& text) {
    const auto is_blank = [](char c) { return static_cast<unsigned char>(c) <= 0x20; };
    std::size_t begin = 0;
    std::size_t end = text.size();
    while (begin < end && is_blank(text[begin])) ++begin;
    while (end > begin && is_blank(text[end - 1])) --end;
    return text.substr(begin, end - begin);
}

}  // namespace qv
