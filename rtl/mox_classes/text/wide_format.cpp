#include "mox_classes/text/wide_format.h"

namespace System {

namespace {

constexpr int kMaxWidth = 4096;

bool IsOneOf(WCHAR unit, const char* set) {
    for (; *set != 0; ++set) {
        if (unit == static_cast<unsigned char>(*set)) return true;
    }
    return false;
}

// Steps over decimal digits; false when they make a number above kMaxWidth.
bool SkipNumber(const WCHAR*& p) {
    int value = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        value = value * 10 + (*p - '0');
        if (value > kMaxWidth) return false;
    }
    return true;
}

enum class TSize { None, Half, Long, Bits32, Bits64, LongDouble };

TSize ReadSize(const WCHAR*& p) {
    if (p[0] == 'I' && p[1] == '6' && p[2] == '4') {
        p += 3;
        return TSize::Bits64;
    }
    if (p[0] == 'I' && p[1] == '3' && p[2] == '2') {
        p += 3;
        return TSize::Bits32;
    }
    switch (*p) {
        case 'h':
            ++p;
            return TSize::Half;
        case 'l':
            ++p;
            return TSize::Long;
        case 'L':
            ++p;
            return TSize::LongDouble;
        default:
            return TSize::None;
    }
}

// Reads what the conversion at `p` (behind its '%') takes, and moves `p` behind it.
bool ReadConversion(const WCHAR*& p, TFormatKind& kind) {
    while (IsOneOf(*p, "-+ #0")) ++p;
    if (!SkipNumber(p)) return false;
    if (*p == '.') {
        ++p;
        if (!SkipNumber(p)) return false;
    }
    const TSize size = ReadSize(p);
    const WCHAR letter = *p;
    if (letter == 0) return false;
    ++p;
    if (IsOneOf(letter, "diouxX")) {
        kind = size == TSize::Bits64 ? TFormatKind::Int64 : TFormatKind::Int32;
        return size != TSize::LongDouble;
    }
    if (letter == 'c') {
        kind = TFormatKind::Int32;
        return size <= TSize::Long;
    }
    if (IsOneOf(letter, "eEfgG")) {
        kind = TFormatKind::Double;
        return size == TSize::None || size == TSize::Long || size == TSize::LongDouble;
    }
    if (letter == 's') {
        kind = TFormatKind::Text;
        return size == TSize::None || size == TSize::Long;
    }
    kind = TFormatKind::Pointer;
    return letter == 'p' && size == TSize::None;
}

}  // namespace

bool FormatTakes(const WCHAR* format, const TFormatKind* kinds, int count) {
    if (format == nullptr) return count == 0;
    int taken = 0;
    for (const WCHAR* p = format; *p != 0;) {
        if (*p++ != '%') continue;
        if (*p == '%') {
            ++p;
            continue;
        }
        TFormatKind kind;
        if (!ReadConversion(p, kind)) return false;
        if (taken == count || kinds[taken] != kind) return false;
        ++taken;
    }
    return taken == count;
}

}  // namespace System
