#include "mox_classes/text/sysutils_numbers.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace Sysutils {

namespace {

// The value of a digit; -1 when the unit is no digit of the base.
int DigitOf(WCHAR unit, int base) {
    if (unit >= '0' && unit <= '9') return unit - '0';
    if (base == 16 && unit >= 'a' && unit <= 'f') return unit - 'a' + 10;
    if (base == 16 && unit >= 'A' && unit <= 'F') return unit - 'A' + 10;
    return -1;
}

// Computes in `Unsigned`, where an overflow wraps. Stops with false at the first unit that is no
// digit; `value` then holds the number before it.
template <class Unsigned>
bool ParseInteger(const UnicodeString& s, Unsigned& value) {
    value = 0;
    const WCHAR* unit = s.t_str();
    const WCHAR* const end = unit + s.Length();
    if (unit == end) return false;
    const bool hex = s.Length() >= 2 && unit[0] == '0' && (unit[1] == 'x' || unit[1] == 'X');
    const bool negative = *unit == '-';
    if (hex) {
        unit += 2;
    } else if (negative || *unit == '+') {
        ++unit;
    }
    const int base = hex ? 16 : 10;
    int digit = 0;
    for (; unit != end && (digit = DigitOf(*unit, base)) >= 0; ++unit) {
        value = value * static_cast<Unsigned>(base) + static_cast<Unsigned>(digit);
    }
    if (negative) value = Unsigned{0} - value;
    return unit == end;
}

UnicodeString NotValid(const UnicodeString& s, const char* what) {
    return "'" + s + "' is not a valid " + what + " value";
}

bool IsDigit(char c, bool hex) {
    return (c >= '0' && c <= '9') || (hex && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')));
}

// Whether a number that no double can hold is too large rather than too small. It is too large when
// its first digit other than 0, exponent included, stands in front of the point.
bool IsTooLarge(const char* text, const char* end, bool hex) {
    long long position = 0;
    bool point = false, significant = false;
    for (; text != end && (IsDigit(*text, hex) || *text == '.'); ++text) {
        if (*text == '.') {
            point = true;
            continue;
        }
        significant = significant || *text != '0';
        if (point && !significant) --position;
        if (!point && significant) ++position;
    }
    if (hex) position *= 4;
    if (text == end) return position > 0;
    ++text;
    const bool negative = text != end && *text == '-';
    long long exponent = 0;
    for (; text != end; ++text) {
        if (IsDigit(*text, false) && exponent < 1'000'000'000'000) {
            exponent = exponent * 10 + (*text - '0');
        }
    }
    return position + (negative ? -exponent : exponent) > 0;
}

struct TFloatText {
    double value = 0;
    std::size_t consumed = 0;
};

// The longest number at the start of a narrow text, as strtod of the "C" locale reads it.
TFloatText ParseFloat(const std::string& text) {
    const std::size_t blanks = text.find_first_not_of(" \t\n\v\f\r");
    if (blanks == std::string::npos) return {};
    const char* first = text.data() + blanks;
    const char* const end = text.data() + text.size();
    const bool negative = *first == '-';
    if (negative || *first == '+') ++first;
    if (first == end || *first == '-') return {};

    const auto hex_digits_follow = [&] {
        const std::size_t left = static_cast<std::size_t>(end - first);
        if (left < 3 || first[0] != '0' || (first[1] != 'x' && first[1] != 'X')) return false;
        return IsDigit(first[2], true) || (first[2] == '.' && left > 3 && IsDigit(first[3], true));
    };
    const bool hex = hex_digits_follow();
    if (hex) first += 2;
    double value = 0;
    const auto [stop, error] = std::from_chars(
        first, end, value, hex ? std::chars_format::hex : std::chars_format::general);
    if (error == std::errc::invalid_argument) return {};
    if (error == std::errc::result_out_of_range) {
        value = IsTooLarge(first, stop, hex) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return {negative ? -value : value, static_cast<std::size_t>(stop - text.data())};
}

// Only ASCII units belong to a number.
bool ReadFloat(const UnicodeString& s, double& value) {
    std::string narrow;
    narrow.reserve(static_cast<std::size_t>(s.Length()));
    for (const WCHAR* unit = s.t_str(); *unit != 0 && *unit < 0x80; ++unit) {
        narrow.push_back(static_cast<char>(*unit));
    }
    const TFloatText read = ParseFloat(narrow);
    value = read.value;
    return read.consumed == static_cast<std::size_t>(s.Length());
}

}  // namespace

bool TryStrToInt(UnicodeString s, int& value) {
    std::uint32_t bits;
    const bool whole = ParseInteger(s, bits);
    value = static_cast<int>(bits);
    return whole;
}

bool TryStrToInt64(UnicodeString s, std::int64_t& value) {
    std::uint64_t bits;
    const bool whole = ParseInteger(s, bits);
    value = static_cast<std::int64_t>(bits);
    return whole;
}

int StrToInt(UnicodeString s) {
    int value;
    if (!TryStrToInt(s, value)) throw NotValid(s, "integer");
    return value;
}

std::int64_t StrToInt64(UnicodeString s) {
    std::int64_t value;
    if (!TryStrToInt64(s, value)) throw NotValid(s, "integer");
    return value;
}

int StrToIntDef(UnicodeString s, int def) {
    int value;
    return TryStrToInt(std::move(s), value) ? value : def;
}

std::int64_t StrToInt64Def(UnicodeString s, std::int64_t def) {
    std::int64_t value;
    return TryStrToInt64(std::move(s), value) ? value : def;
}

void* StrToHandleDef(const UnicodeString& s, void* def) {
    std::int64_t value;
    return TryStrToInt64(s, value) ? reinterpret_cast<void*>(static_cast<std::intptr_t>(value))
                                   : def;
}

long double StrToFloat(UnicodeString s) {
    double value;
    if (!ReadFloat(s, value)) throw NotValid(s, "floating point");
    return value;
}

long double StrToFloatDef(UnicodeString s, long double def) {
    double value;
    return ReadFloat(s, value) ? value : def;
}

bool TryStrToFloat(UnicodeString s, double& value) {
    return ReadFloat(s, value);
}

bool TryStrToFloat(UnicodeString s, long double& value) {
    double read;
    const bool whole = ReadFloat(s, read);
    value = read;
    return whole;
}

bool TryStrToFloat(UnicodeString s, float& value) {
    double read;
    const bool whole = ReadFloat(s, read);
    constexpr float kLargest = std::numeric_limits<float>::max();
    constexpr double kRoundsUp = 0x1.ffffffp127;  // halfway from the largest to what would follow
    const auto signed_as_read = [&](float size) { return read < 0 ? -size : size; };
    if (std::abs(read) >= kRoundsUp) {
        value = signed_as_read(std::numeric_limits<float>::infinity());
    } else if (std::abs(read) > kLargest) {
        value = signed_as_read(kLargest);
    } else {
        value = static_cast<float>(read);
    }
    return whole;
}

UnicodeString IntToStr(int value) {
    return UnicodeString(value);
}

UnicodeString IntToHex(int value, int digits) {
    return UnicodeString::IntToHex(value, digits);
}

UnicodeString FloatToStr(long double value) {
    return UnicodeString().sprintf(TEXT("%Lf"), value);
}

UnicodeString UnicodeVPrintf(UnicodeString format, va_list arguments) {
    UnicodeString text;
    text.vprintf(format.t_str(), arguments);
    return text;
}

}  // namespace Sysutils
