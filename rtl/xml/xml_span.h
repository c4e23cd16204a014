// Spans of the scanned buffer, as positions from its start.
#pragma once

#include <cstddef>
#include <string_view>

#include "xml/char_finder.h"

// Takes blanks and control characters off both ends.
inline void XmlTrimSpan(const TAsciiCharFinder& finder, int& from, int& to) {
    const unsigned char* bytes = finder.Bytes(0);
    while (from < to && bytes[from] <= 0x20) ++from;
    while (from < to && bytes[to - 1] <= 0x20) --to;
}

inline std::string_view XmlSpanBytes(const TAsciiCharFinder& finder, int from, int to) {
    return {reinterpret_cast<const char*>(finder.Bytes(from)), static_cast<std::size_t>(to - from)};
}
