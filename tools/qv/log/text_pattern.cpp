#include "log/text_pattern.h"

#include "base/console.h"

namespace qv {

namespace {

constexpr int kLongestPattern = 1000;

std::wstring Wide(const UnicodeString& text) {
    std::wstring wide;
    wide.reserve(static_cast<std::size_t>(text.Length()));
    for (int i = 1; i <= text.Length(); ++i) wide += static_cast<wchar_t>(text[i]);
    return wide;
}

// Lower case of Latin, Greek and Cyrillic letters, alike on both hosts.
wchar_t LowerCase(wchar_t unit) {
    const auto in = [unit](wchar_t first, wchar_t last) { return unit >= first && unit <= last; };
    const auto moved = [unit](int by) { return static_cast<wchar_t>(unit + by); };
    if (in(L'A', L'Z') || (in(0xC0, 0xDE) && unit != 0xD7) || in(0x391, 0x3A9) || in(0x410, 0x42F))
        return moved(0x20);
    if (in(0x400, 0x40F)) return moved(0x50);
    // Pairs: the capital is the even one, or the odd one.
    if (in(0x100, 0x12F) || in(0x132, 0x137) || in(0x14A, 0x177)) return moved(unit % 2 == 0);
    if (in(0x139, 0x148) || in(0x179, 0x17E)) return moved(unit % 2 == 1);
    return unit;
}

std::wstring Folded(std::wstring text) {
    for (wchar_t& unit : text) unit = LowerCase(unit);
    return text;
}

// Without what an escape such as \W means.
std::wstring FoldedPattern(std::wstring pattern) {
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == L'\\') {
            ++i;
        } else {
            pattern[i] = LowerCase(pattern[i]);
        }
    }
    return pattern;
}

}  // namespace

TextPattern::TextPattern(const std::string& pattern, bool ignore_case) : ignore_case_(ignore_case) {
    const UnicodeString whole = FromUtf8(pattern);
    if (whole.Length() > kLongestPattern) {
        throw Failure(
            "the pattern is longer than " + std::to_string(kLongestPattern) + " characters",
            ExitCode::kWrongUsage);
    }
    const std::wstring text = ignore_case ? FoldedPattern(Wide(whole)) : Wide(whole);
    if (text.find_first_of(L"\\^$.|?*+()[]{}") == std::wstring::npos) {
        literal_ = text;
        return;
    }
    try {
        // The default matcher recurses once per character and may take exponential time.
        regex_.assign(text, std::regex::ECMAScript | std::regex_constants::__polynomial);
    } catch (const std::regex_error& error) {
        throw Failure("the pattern '" + pattern + "' is malformed: " + error.what(),
                      ExitCode::kWrongUsage);
    }
}

bool TextPattern::IsIn(const UnicodeString& text) const {
    const std::wstring wide = ignore_case_ ? Folded(Wide(text)) : Wide(text);
    if (!literal_.empty()) return wide.find(literal_) != std::wstring::npos;
    return std::regex_search(wide, regex_);
}

}  // namespace qv
