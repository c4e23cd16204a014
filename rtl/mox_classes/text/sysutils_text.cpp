#include "mox_classes/text/sysutils_text.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace Sysutils {

namespace {

using TUnits = std::basic_string_view<WCHAR>;

TUnits UnitsOf(const UnicodeString& s) {
    return TUnits(s.t_str(), static_cast<std::size_t>(s.Length()));
}

bool IsSurrogate(WCHAR unit) {
    return unit >= 0xD800 && unit <= 0xDFFF;
}
bool IsTrail(WCHAR unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}
bool IsInside(const UnicodeString& s, int index) {
    return index >= 1 && index <= s.Length();
}

UnicodeString TrimEnds(UnicodeString s, bool left, bool right) {
    const TUnits units = UnitsOf(s);
    std::size_t first = 0;
    std::size_t last = units.size();
    while (left && first < last && units[first] <= 0x20) ++first;
    while (right && last > first && units[last - 1] <= 0x20) --last;
    if (last - first == units.size()) return s;
    return s.SubString(static_cast<int>(first) + 1, static_cast<int>(last - first));
}

UnicodeString ShiftRange(UnicodeString s, WCHAR low, WCHAR high, int shift) {
    s.Unique();
    WCHAR* const units = s.data();
    for (int i = 0; i < s.Length(); ++i) {
        if (units[i] >= low && units[i] <= high) units[i] = static_cast<WCHAR>(units[i] + shift);
    }
    return s;
}

// The text between two quotes, each doubled quote reduced to one.
UnicodeString Unquoted(TUnits quoted, WCHAR quote) {
    UnicodeString result;
    result.SetLength(static_cast<long long>(quoted.size()));
    int length = 0;
    for (std::size_t i = 0; i < quoted.size(); ++i) {
        result.data()[length++] = quoted[i];
        if (quoted[i] == quote && i + 1 < quoted.size() && quoted[i + 1] == quote) ++i;
    }
    return result.SetLength(length);
}

}  // namespace

UnicodeString Trim(UnicodeString s) {
    return TrimEnds(std::move(s), true, true);
}
UnicodeString TrimLeft(UnicodeString s) {
    return TrimEnds(std::move(s), true, false);
}
UnicodeString TrimRight(UnicodeString s) {
    return TrimEnds(std::move(s), false, true);
}
UnicodeString LowerCase(UnicodeString s) {
    return ShiftRange(std::move(s), 'A', 'Z', 'a' - 'A');
}
UnicodeString UpperCase(UnicodeString s) {
    return ShiftRange(std::move(s), 'a', 'z', 'A' - 'a');
}

TMbcsByteType ByteType(UnicodeString s, int index) {
    if (!IsInside(s, index)) return mbSingleByte;
    const WCHAR unit = s.t_str()[index - 1];
    if (!IsSurrogate(unit)) return mbSingleByte;
    return IsTrail(unit) ? mbTrailByte : mbLeadByte;
}

bool IsDelimiter(UnicodeString delimiters, UnicodeString s, int index) {
    if (!IsInside(s, index)) return false;
    const WCHAR unit = s.t_str()[index - 1];
    return !IsSurrogate(unit) && UnitsOf(delimiters).find(unit) != TUnits::npos;
}

bool IsPathDelimiter(UnicodeString s, int index) {
    return IsInside(s, index) && s.t_str()[index - 1] == '\\';
}

int LastDelimiter(UnicodeString delimiters, UnicodeString s) {
    const TUnits wanted = UnitsOf(delimiters);
    const TUnits units = UnitsOf(s);
    for (std::size_t i = units.size(); i > 0; --i) {
        const WCHAR unit = units[i - 1];
        if (unit != 0 && !IsTrail(unit) && wanted.find(unit) != TUnits::npos) {
            return static_cast<int>(i);
        }
    }
    return 0;
}

const WCHAR* StrScan(const WCHAR* text, WCHAR unit) {
    if (text == nullptr) return nullptr;
    for (; *text != unit; ++text) {
        if (*text == 0) return nullptr;
    }
    return text;
}

bool IsAlphaNumericString(UnicodeString s) {
    TUnits units = UnitsOf(s);
    units.remove_prefix(std::min<std::size_t>(units.size(), 1));
    return std::all_of(units.begin(), units.end(), [](WCHAR unit) {
        return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') ||
               (unit >= '0' && unit <= '9') || unit == '_';
    });
}

ULONG StringHash(UnicodeString s) {
    const WCHAR* const units = s.t_str();
    ULONG hash = 0;
    // Two units make one step. When the length is odd, the last step reads the terminator as its
    // second unit.
    for (int i = 0; i < s.Length(); i += 2) {
        const ULONG word = static_cast<ULONG>(units[i]) | static_cast<ULONG>(units[i + 1]) << 16;
        hash = hash * 31 + word;
    }
    return hash;
}

int CopyCch(WCHAR* dest, int capacity, UnicodeString s) {
    if (dest == nullptr || capacity < 1) return 0;
    const int count = std::min(s.Length(), capacity - 1);
    std::memcpy(dest, s.t_str(), static_cast<std::size_t>(count) * sizeof(WCHAR));
    dest[count] = 0;
    return count;
}

UnicodeString AnsiQuotedStr(UnicodeString s, WCHAR quote) {
    const TUnits units = UnitsOf(s);
    const auto quotes = std::count(units.begin(), units.end(), quote);
    UnicodeString result;
    result.SetLength(s.Length() + 2LL + quotes);
    WCHAR* out = result.data();
    *out++ = quote;
    for (const WCHAR unit : units) {
        *out++ = unit;
        if (unit == quote) *out++ = quote;
    }
    *out = quote;
    return result;
}

UnicodeString QuotedStr(UnicodeString s) {
    return AnsiQuotedStr(std::move(s), '\'');
}

UnicodeString AnsiExtractQuotedStr(const WCHAR*& p, WCHAR quote) {
    if (p == nullptr || quote == 0 || *p != quote) return UnicodeString();
    const WCHAR* const start = ++p;
    for (; *p != 0; ++p) {
        if (*p != quote) continue;
        ++p;
        if (*p != quote) break;
    }
    if (p - start <= 1) return UnicodeString();
    return Unquoted(TUnits(start, static_cast<std::size_t>(p - start - 1)), quote);
}

}  // namespace Sysutils
