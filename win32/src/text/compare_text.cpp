// Comparison of texts for people: the alphabet decides first, then accents, then case.
#include <windows.h>

#include <algorithm>

#include "text/case_fold.h"
#include "text/host_text.h"

using namespace host;

namespace {

// The letters without their accents for U+00C0 to U+00FF and U+0100 to U+017F; a blank where there
// is none.
constexpr std::string_view kLatin1Base =
    "AAAAAAACEEEEIIIIDNOOOOO OUUUUYTsaaaaaaaceeeeiiiidnooooo ouuuuyty";
constexpr std::string_view kLatinABase =
    "AaAaAaCcCcCcCcDdDdEeEeEeEeEeGgGgGgGgHhHhIiIiIiIiIiIiJjKkkLlLlLlLlLlNnNnNnnNnOoOoOoOo"
    "RrRrRrSsSsSsSsTtTtTtUuUuUuUuUuUuWwYyYZzZzZzs";
static_assert(kLatin1Base.size() == 0x40 && kLatinABase.size() == 0x80);

// The weight of one unit at each level. A unit with weight 0 at the first level is ignored there.
struct Weight {
    int alphabet, accent, upper;
};

bool IsSymbol(WCHAR c) {
    return (c < 0x80 && !(c >= 'A' && c <= 'Z')) || (c >= 0x80 && c < 0xC0) ||
           (c >= 0x2000 && c < 0x2C00) || (c >= 0x3000 && c < 0x3040);
}

Weight WeightOf(WCHAR unit) {
    // A word sorts at the same place with and without a hyphen or an apostrophe.
    if (unit == '-' || unit == '\'' || unit == 0xAD) return {0, unit, 0};
    WCHAR base = unit;
    if (unit >= 0xC0 && unit <= 0xFF && kLatin1Base[unit - 0xC0u] != ' ') {
        base = static_cast<WCHAR>(kLatin1Base[unit - 0xC0u]);
    } else if (unit >= 0x100 && unit <= 0x17F) {
        base = static_cast<WCHAR>(kLatinABase[unit - 0x100u]);
    }
    const WCHAR folded = FoldFileNameUnit(base);
    const bool digit = base >= '0' && base <= '9';
    const int kind = digit ? 2 : IsSymbol(folded) ? 1 : 3;
    const WCHAR upper = FoldFileNameUnit(unit);
    return {kind << 16 | folded, unit == base ? 0 : upper, unit == upper ? 1 : 0};
}

int Sign(int a, int b) {
    return a < b ? -1 : a > b ? 1 : 0;
}

// Compares the first level; units with weight 0 are skipped.
int CompareAlphabet(WideView a, WideView b) {
    const auto next = [](WideView& text) {
        while (!text.empty()) {
            const int weight = WeightOf(text.front()).alphabet;
            text.remove_prefix(1);
            if (weight != 0) return weight;
        }
        return 0;
    };
    while (!a.empty() || !b.empty()) {
        if (const int order = Sign(next(a), next(b))) return order;
    }
    return 0;
}

// Compares a later level, unit by unit.
int CompareLevel(WideView a, WideView b, int Weight::*level) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (const int order = Sign(WeightOf(a[i]).*level, WeightOf(b[i]).*level)) return order;
    }
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

WideView TextOf(LPCWSTR text, int length) {
    return length < 0 ? WideView(text) : WideView(text, static_cast<std::size_t>(length));
}

}  // namespace

int CompareStringW(LCID /*locale*/, DWORD flags, LPCWSTR a, int a_length, LPCWSTR b, int b_length) {
    if (a == nullptr || b == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if ((flags & ~static_cast<DWORD>(NORM_IGNORECASE)) != 0) {
        SetLastError(ERROR_INVALID_FLAGS);
        return 0;
    }
    const WideView left = TextOf(a, a_length);
    const WideView right = TextOf(b, b_length);
    int order = CompareAlphabet(left, right);
    if (order == 0) order = CompareLevel(left, right, &Weight::accent);
    if (order == 0 && (flags & NORM_IGNORECASE) == 0) {
        order = CompareLevel(left, right, &Weight::upper);
    }
    return CSTR_EQUAL + order;
}
