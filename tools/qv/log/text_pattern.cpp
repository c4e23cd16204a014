#include "log/text_pattern.h"

#include <stdexcept>

#include "base/console.h"

namespace qv {

namespace {

constexpr int kLongestPattern = 1000;

// Lower case of Latin, Greek and Cyrillic letters, alike on both hosts.
WCHAR LowerCase(WCHAR unit) {
    const auto in = [unit](unsigned first, unsigned last) { return unit >= first && unit <= last; };
    const auto moved = [unit](int by) { return static_cast<WCHAR>(unit + by); };
    if (in('A', 'Z')) return moved(0x20);
    if (unit < 0xC0) return unit;
    if ((in(0xC0, 0xDE) && unit != 0xD7) || in(0x391, 0x3A9) || in(0x410, 0x42F))
        return moved(0x20);
    if (in(0x400, 0x40F)) return moved(0x50);
    // Pairs: the capital is the even one, or the odd one.
    if (in(0x100, 0x12F) || in(0x132, 0x137) || in(0x14A, 0x177)) return moved(unit % 2 == 0);
    if (in(0x139, 0x148) || in(0x179, 0x17E)) return moved(unit % 2 == 1);
    return unit;
}

UnicodeString Folded(const UnicodeString& text) {
    UnicodeString folded;
    folded.SetLength(text.Length());
    WCHAR* out = folded.data();
    for (const WCHAR unit : UnitsOf(text)) *out++ = LowerCase(unit);
    return folded;
}

// Without what an escape such as \W means.
UnicodeString FoldedPattern(const UnicodeString& pattern) {
    UnicodeString folded = Folded(pattern);
    const Units units = UnitsOf(pattern);
    for (std::size_t i = 0; i + 1 < units.size(); ++i) {
        if (units[i] != '\\') continue;
        ++i;
        folded.data()[i] = units[i];
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
    const UnicodeString text = ignore_case ? FoldedPattern(whole) : whole;
    if (UnitsOf(text).find_first_of(TEXT("\\^$.|?*+()[]{}")) == Units::npos) {
        literal_ = text;
        return;
    }
    try {
        expression_.emplace(UnitsOf(text));
    } catch (const std::invalid_argument& error) {
        throw Failure("the pattern '" + OneLine(whole) + "' is malformed: " + error.what(),
                      ExitCode::kWrongUsage);
    }
}

bool TextPattern::IsIn(const UnicodeString& text) const {
    const UnicodeString searched = ignore_case_ ? Folded(text) : text;
    return expression_ ? expression_->IsIn(UnitsOf(searched)) : searched.Pos(literal_) > 0;
}

}  // namespace qv
