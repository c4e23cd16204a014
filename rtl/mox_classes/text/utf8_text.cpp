#include "mox_classes/text/utf8_text.h"

#include <windows.h>

#include <algorithm>

#include "mox_classes/units/unit_vector.h"

namespace System {

namespace {

constexpr int kShort = 256;

// Converts in two passes: the first gives the size, the second the text.
UnicodeString Measured(const char* bytes, int count) {
    UnicodeString text;
    const int units = MultiByteToWideChar(CP_UTF8, 0, bytes, count, nullptr, 0);
    if (units < 1) return text;
    text.SetLength(units);
    MultiByteToWideChar(CP_UTF8, 0, bytes, count, text.data(), units);
    return text;
}

// Counts the UTF-16 units of well-formed UTF-8. For other bytes the result is some number that
// means nothing.
long long ExpectedUnits(const char* bytes, int count) {
    long long units = 0;
    const char* const end = bytes + count;
    while (end - bytes >= kByteStep) {
        const int blocks = std::min(static_cast<int>(end - bytes) / kByteStep, kMostBlocks);
        units += UnitsBegun(bytes, blocks);
        bytes += std::ptrdiff_t{blocks} * kByteStep;
    }
    for (; bytes != end; ++bytes) {
        const auto byte = static_cast<unsigned char>(*bytes);
        units += (byte & 0xC0) != 0x80;
        units += byte >= 0xF0;
    }
    return units;
}

}  // namespace

// The platform's converter counts slowly. Short text is therefore converted on the stack. Longer
// text is converted straight into the new string when it is well-formed (1 KB of three-byte
// characters: half of the time of counting first).
UnicodeString StringFromUtf8(const char* bytes, int count) {
    if (bytes == nullptr || count < 1) return UnicodeString();
    if (count <= kShort) {
        WCHAR buffer[kShort];
        return UnicodeString(buffer, MultiByteToWideChar(CP_UTF8, 0, bytes, count, buffer, kShort));
    }
    const long long expected = ExpectedUnits(bytes, count);
    if (expected < 1 || expected > count) return Measured(bytes, count);
    UnicodeString text;
    text.SetLength(expected);
    const int room = static_cast<int>(expected);
    const int units = MultiByteToWideChar(CP_UTF8, 0, bytes, count, text.data(), room);
    if (units < 1) return Measured(bytes, count);
    if (units != room) text.SetLength(units);
    return text;
}

}  // namespace System
