// The constructors of the string: from numbers, narrow text, UTF-16 and UTF-32.
#include <windows.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <limits>

#include "mox_classes/text/sysutils_numbers.h"
#include "mox_classes/text/unicode_string.h"

namespace System {

namespace {

constexpr long long kMostUnits = std::numeric_limits<int>::max();

// The length of a text: `count`, or for -1 the units up to the terminator.
template <class Unit>
long long CountedLength(const Unit* text, long long count) {
    if (count > kMostUnits) throw UnicodeString("Out of length");
    if (count != -1) return count;
    const Unit* end = text;
    while (*end != 0) ++end;
    if (end - text > kMostUnits) throw UnicodeString("Out of length");
    return end - text;
}

UnicodeString FromShorts(const unsigned short* text, long long count) {
    UnicodeString result;
    if (text == nullptr) return result;
    const long long length = CountedLength(text, count);
    if (length < 1) return result;
    result.SetLength(length);
    std::memcpy(result.data(), text, static_cast<std::size_t>(length) * sizeof(WCHAR));
    return result;
}

// Null when the conversion gives no units. Short texts are converted on the stack, so they need one
// pass.
UnicodeString FromAnsi(const char* text, int bytes) {
    constexpr int kShort = 256;
    UnicodeString result;
    if (bytes < 1) return result;
    if (bytes <= kShort) {
        WCHAR buffer[kShort];
        const int units = MultiByteToWideChar(CP_ACP, 0, text, bytes, buffer, kShort);
        if (units > 0) return UnicodeString(buffer, units);
    }
    const int units = MultiByteToWideChar(CP_ACP, 0, text, bytes, nullptr, 0);
    if (units < 1) return result;
    result.SetLength(units);
    if (MultiByteToWideChar(CP_ACP, 0, text, bytes, result.data(), units) != units) {
        return UnicodeString();
    }
    return result;
}

int DigitsOf(unsigned long long value) {
    int digits = 1;
    for (; value >= 10000; value /= 10000) digits += 4;
    return digits + (value >= 10) + (value >= 100) + (value >= 1000);
}

// Writes the digits from the last to the first, two for each division, straight into the new
// string. A copy from a stack buffer would wait for the bytes that were just written.
UnicodeString FromNumber(unsigned long long value, bool negative) {
    int digits = DigitsOf(value);
    UnicodeString text;
    text.SetLength(digits + (negative ? 1 : 0));
    WCHAR* place = text.data() + text.Length();
    for (; digits >= 2; digits -= 2) {
        const auto pair = static_cast<unsigned>(value % 100);
        value /= 100;
        *--place = static_cast<WCHAR>('0' + pair % 10);
        *--place = static_cast<WCHAR>('0' + pair / 10);
    }
    if (digits == 1) *--place = static_cast<WCHAR>('0' + value);
    if (negative) *--place = '-';
    return text;
}

UnicodeString FromSigned(long long value) {
    const auto bits = static_cast<unsigned long long>(value);
    return FromNumber(value < 0 ? 0 - bits : bits, value < 0);
}

int Utf16Units(unsigned int code_point) {
    return code_point >= 0x10000 && code_point <= 0x10FFFF ? 2 : 1;
}

WCHAR* PutUtf16(WCHAR* out, unsigned int code_point) {
    if (Utf16Units(code_point) == 2) {
        const unsigned int bits = code_point - 0x10000;
        *out++ = static_cast<WCHAR>(0xD800 | (bits >> 10));
        *out++ = static_cast<WCHAR>(0xDC00 | (bits & 0x3FF));
    } else {
        *out++ = static_cast<WCHAR>(code_point > 0x10FFFF ? 0xFFFD : code_point);
    }
    return out;
}

}  // namespace

UnicodeString::UnicodeString(char c)
    : UnicodeString(static_cast<WCHAR>(static_cast<signed char>(c))) {}
UnicodeString::UnicodeString(WCHAR unit) : UnicodeString(&unit, 1) {}
UnicodeString::UnicodeString(unsigned short unit) : UnicodeString(&unit, 1) {}

UnicodeString::UnicodeString(short value) : UnicodeString(FromSigned(value)) {}
UnicodeString::UnicodeString(int value) : UnicodeString(FromSigned(value)) {}
UnicodeString::UnicodeString(unsigned int value) : UnicodeString(FromNumber(value, false)) {}
UnicodeString::UnicodeString(long value) : UnicodeString(FromSigned(value)) {}
UnicodeString::UnicodeString(unsigned long value) : UnicodeString(FromNumber(value, false)) {}
UnicodeString::UnicodeString(long long value) : UnicodeString(FromSigned(value)) {}
UnicodeString::UnicodeString(unsigned long long value) : UnicodeString(FromNumber(value, false)) {}
UnicodeString::UnicodeString(double value) : UnicodeString(Sysutils::FloatToStr(value)) {}

UnicodeString::UnicodeString(const char* text) : UnicodeString() {
    if (text != nullptr) *this = FromAnsi(text, static_cast<int>(CountedLength(text, -1)));
}

UnicodeString::UnicodeString(const char* text, long long count) : UnicodeString() {
    if (text == nullptr) return;
    const long long bytes = CountedLength(text, count);
    if (bytes < 0) return;
    *this = FromAnsi(text, static_cast<int>(bytes));
    if (IsEmpty()) SetLength(0);
}

UnicodeString::UnicodeString(const unsigned short* text) : UnicodeString(FromShorts(text, -1)) {}
UnicodeString::UnicodeString(const unsigned short* text, long long count)
    : UnicodeString(FromShorts(text, count)) {}
UnicodeString::UnicodeString(const WCHAR* text) : UnicodeString(text, -1) {}

UnicodeString::UnicodeString(const unsigned int* text, long long count) : UnicodeString() {
    if (count > kMostUnits) throw UnicodeString("Out of length");
    if (text == nullptr || count == 0) return;
    long long code_points = 0;
    long long units = 0;
    for (; (count < 0 || code_points < count) && text[code_points] != 0; ++code_points) {
        units += Utf16Units(text[code_points]);
    }
    SetLength(units);
    WCHAR* out = data_;
    for (long long i = 0; i < code_points; ++i) out = PutUtf16(out, text[i]);
}

UnicodeString UnicodeString::IntToHex(int value, int digits) {
    char text[8];
    const char* end =
        std::to_chars(std::begin(text), std::end(text), static_cast<unsigned int>(value), 16).ptr;
    const auto length = static_cast<int>(end - text);
    // As for the conversion "%0*X", a negative width is one with the blanks behind the number.
    const bool left = digits < 0;
    UnicodeString result;
    result.SetLength(std::max<long long>(length, left ? -static_cast<long long>(digits) : digits));
    WCHAR* const first = result.data();
    WCHAR* const last = first + result.Length();
    std::fill(first, last, left ? TEXT(' ') : TEXT('0'));
    std::transform(static_cast<const char*>(text), end, left ? first : last - length,
                   [](char c) { return static_cast<WCHAR>(c >= 'a' ? c - 'a' + 'A' : c); });
    return result;
}

}  // namespace System
