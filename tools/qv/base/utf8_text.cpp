#include "base/utf8_text.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "base/exit_code.h"
#include "mox_classes/text/sys_error.h"

namespace qv {

namespace {

// Units that a terminal acts on, or that change how a line reads: control characters, line
// separators and marks of writing direction.
bool IsHarmful(unsigned unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x061C || unit == 0x200E ||
           unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

// Printable ASCII.
bool IsPlain(unsigned unit) {
    return unit >= 0x20 && unit < 0x7F;
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

// Adds the plain units at the front of `text` and returns their number. Nearly all text is plain.
// The loop works on blocks, which the compiler turns into vector instructions.
std::size_t AddPlain(std::string& out, Units text) {
    constexpr std::size_t kBlock = 16;
    std::size_t done = 0;
    for (; text.size() - done >= kBlock; done += kBlock) {
        char block[kBlock];
        bool plain = true;
        for (std::size_t i = 0; i < kBlock; ++i) {
            const unsigned short unit = text[done + i];
            plain &= IsPlain(unit);
            block[i] = static_cast<char>(unit);
        }
        if (!plain) break;
        out.append(block, kBlock);
    }
    for (; done < text.size() && IsPlain(text[done]); ++done) out += static_cast<char>(text[done]);
    return done;
}

// Adds `text` with its harmful units escaped. Units of `kept` stay as they are.
void AddEscaped(std::string& out, Units text, std::string_view kept) {
    const auto is_escaped = [kept](unsigned unit) {
        return IsHarmful(unit) &&
               (unit >= 0x80 || kept.find(static_cast<char>(unit)) == std::string_view::npos);
    };
    while (!text.empty()) {
        text.remove_prefix(AddPlain(out, text));
        const auto harmful = std::find_if(text.begin(), text.end(), is_escaped);
        const auto harmless = static_cast<std::size_t>(harmful - text.begin());
        AddUtf8(out, text.substr(0, harmless));
        text.remove_prefix(harmless);
        if (text.empty()) break;
        out += Escaped(text[0]);
        text.remove_prefix(1);
    }
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
    result.reserve(static_cast<std::size_t>(text.Length()));
    AddUtf8(result, UnitsOf(text));
    return result;
}

void AddUtf8(std::string& out, Units text) {
    constexpr std::size_t kMost = 256;  // units at a time
    char bytes[3 * kMost];
    while (!text.empty()) {
        std::size_t count = std::min(text.size(), kMost);
        // Never cuts between the two units of a surrogate pair.
        if (count < text.size() && (text[count - 1] & 0xFC00) == 0xD800) --count;
        const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(count),
                                             bytes, sizeof(bytes), nullptr, nullptr);
        out.append(bytes, static_cast<std::size_t>(size));
        text.remove_prefix(count);
    }
}

std::string OneLine(const UnicodeString& text) {
    std::string line;
    AddOneLine(line, UnitsOf(text));
    return line;
}

void AddOneLine(std::string& out, Units text) {
    AddEscaped(out, text, {});
}

std::string Quoted(const UnicodeString& text) {
    return "'" + OneLine(text) + "'";
}

std::string Quoted(const std::string& utf8) {
    return Quoted(FromUtf8(utf8));
}

std::string SystemText(DWORD code) {
    return OneLine(Mox::GetSysError(code, true).Trim());
}

std::string Lines(const UnicodeString& text) {
    std::string lines;
    AddEscaped(lines, UnitsOf(text), "\n\t");
    return lines;
}

}  // namespace qv
