#include "xml/xml_reference.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace {

// The code point of a numeric reference, given the text behind its '#'. Characters that are no
// digits are skipped; a number that is too large wraps.
template <class Unit>
std::uint32_t NumberOf(std::basic_string_view<Unit> digits) {
    const bool hexadecimal = !digits.empty() && digits.front() == Unit{'x'};
    if (hexadecimal) digits.remove_prefix(1);
    while (!digits.empty() && digits.front() <= Unit{0x20}) digits.remove_prefix(1);
    while (!digits.empty() && digits.back() <= Unit{0x20}) digits.remove_suffix(1);
    if (hexadecimal && digits.size() > 8) return 0;
    std::uint32_t value = 0;
    for (const std::uint32_t unit : digits) {
        const std::uint32_t lower = unit >= 'A' && unit <= 'Z' ? unit + ('a' - 'A') : unit;
        if (lower >= '0' && lower <= '9') {
            value = value * (hexadecimal ? 16u : 10u) + (lower - '0');
        } else if (hexadecimal && lower >= 'a' && lower <= 'f') {
            value = value * 16u + 10u + (lower - 'a');
        }
    }
    return value;
}

struct TNamedReference {
    std::string_view name;
    WCHAR unit;
};
constexpr TNamedReference kReferences[] = {
    {"gt", TEXT('>')},  {"lt", TEXT('<')},   {"quot", TEXT('"')},
    {"amp", TEXT('&')}, {"nbsp", TEXT(' ')}, {"apos", TEXT('\'')},
};

bool IsSameName(std::string_view lower, std::string_view name) {
    return std::equal(lower.begin(), lower.end(), name.begin(), name.end(), [](char a, char b) {
        return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b + ('a' - 'A')) : b);
    });
}

void AppendPoint(std::basic_string<WCHAR>& pieces, std::uint32_t point) {
    const UnicodeString text(&point, 1);
    pieces.append(text.t_str(), static_cast<std::size_t>(text.Length()));
}

}  // namespace

bool AppendXmlReference(std::basic_string<WCHAR>& pieces, const TAsciiCharFinder& finder, int from,
                        int to) {
    const std::string_view name = XmlSpanBytes(finder, from, to);
    if (!name.empty() && name.front() == '#') {
        const UnicodeString digits = finder.Read(from + 1, to);
        AppendPoint(pieces, NumberOf(std::basic_string_view<WCHAR>(
                                digits.t_str(), static_cast<std::size_t>(digits.Length()))));
        return true;
    }
    for (const TNamedReference& row : kReferences) {
        if (!IsSameName(row.name, name)) continue;
        pieces.push_back(row.unit);
        return true;
    }
    return false;
}
