#include "text_pattern.h"

#include "console.h"

namespace qv {

namespace {

constexpr int kLongestPattern = 1000;

std::wstring Wide(const UnicodeString& text) {
    std::wstring wide;
    wide.reserve(static_cast<std::size_t>(text.Length()));
    for (int i = 1; i <= text.Length(); ++i) wide += static_cast<wchar_t>(text[i]);
    return wide;
}

// Folded to lower case, except for what an escape such as \W means.
UnicodeString FoldedPattern(const UnicodeString& pattern) {
    UnicodeString folded = pattern.LowerCase();
    for (int i = 1; i < pattern.Length(); ++i) {
        if (pattern[i] != '\\') continue;
        ++i;
        folded.data()[i - 1] = pattern.t_str()[i - 1];
    }
    return folded;
}

}  // namespace

TextPattern::TextPattern(const std::string& pattern, bool ignore_case) : ignore_case_(ignore_case) {
    const UnicodeString whole = FromUtf8(pattern);
    if (whole.Length() > kLongestPattern) {
        throw Failure(
            "the pattern is longer than " + std::to_string(kLongestPattern) + " characters",
            ExitCode::kWrongUsage);
    }
    const std::wstring text = Wide(ignore_case ? FoldedPattern(whole) : whole);
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
    const std::wstring wide = Wide(ignore_case_ ? text.LowerCase() : text);
    if (!literal_.empty()) return wide.find(literal_) != std::wstring::npos;
    return std::regex_search(wide, regex_);
}

}  // namespace qv
