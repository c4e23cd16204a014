// Code page numbers of Windows, as strings, streams and XML name text encodings.
#pragma once

#include <cstdint>

namespace System {

// Any 32-bit number is a valid value; the named ones are those that the library knows.
enum TCodePage : std::int32_t {
    kCodePageAnsi = 0,  // the system's ANSI code page; in XML: not set
    kCodePageUtf16 = 1200,
    kCodePageUtf16BigEndian = 1201,
    kCodePageUtf32 = 12000,
    kCodePageUtf32BigEndian = 12001,
    kCodePageAscii = 20127,
    kCodePageUtf8 = 65001,
};

}  // namespace System
