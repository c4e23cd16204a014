// The counted wide formatter: conversions that both hosts' C run-times share.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdarg>
#include <limits>
#include <string>

namespace {

using Wide = std::basic_string<WCHAR>;

struct Result {
    int count;
    Wide text;
};

Result Format(std::size_t room, const WCHAR* format, ...) {
    Wide buffer(room + 1, WCHAR{'~'});
    std::va_list arguments;
    va_start(arguments, format);
    const int count = _vsnwprintf(buffer.data(), room, format, arguments);
    va_end(arguments);
    return {count, buffer};
}

template <class... Args>
Wide Text(const WCHAR* format, Args... arguments) {
    const Result result = Format(600, format, arguments...);
    return result.count < 0 ? Wide(TEXT("<negative>")) : Wide(result.text.c_str());
}

int Needed(const WCHAR* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int count = _vsnwprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    return count;
}

}  // namespace

TEST(WidePrintf, Numbers) {
    EXPECT_EQ(Text(TEXT("%d|%i|%u"), -5, 7, 4000000000u), TEXT("-5|7|4000000000"));
    EXPECT_EQ(Text(TEXT("%5d|%-5d|%05d|%+d|% d"), 42, 42, -42, 42, 42),
              TEXT("   42|42   |-0042|+42| 42"));
    EXPECT_EQ(Text(TEXT("%x %X %#x %#X %o %#o"), 255, 255, 255, 255, 8, 8),
              TEXT("ff FF 0xff 0XFF 10 010"));
    EXPECT_EQ(Text(TEXT("%.3d|%6.3d|%-6.3d|%.0d"), 7, 7, 7, 0), TEXT("007|   007|007   |"));
    EXPECT_EQ(Text(TEXT("%0*X|%*d|%.*d"), 4, 255, -4, 1, 3, 5), TEXT("00FF|1   |005"));
    EXPECT_EQ(Text(TEXT("%hd %hu %ld %lu %lx"), 0x12345, -1, -1, -1, -1),
              TEXT("9029 65535 -1 4294967295 ffffffff"));
    EXPECT_EQ(Text(TEXT("%I64d %I64u %I64X %lld %I32u"), std::numeric_limits<std::int64_t>::min(),
                   ~0ull, ~0ull, -1ll, ~0u),
              TEXT("-9223372036854775808 18446744073709551615 FFFFFFFFFFFFFFFF -1 4294967295"));
    EXPECT_EQ(Text(TEXT("%p"), reinterpret_cast<void*>(0xAB12)), TEXT("000000000000AB12"));
}

TEST(WidePrintf, Texts) {
    EXPECT_EQ(Text(TEXT("[%s][%ls][%hs][%S]"), TEXT("a"), TEXT("b"), "c", "d"),
              TEXT("[a][b][c][d]"));
    EXPECT_EQ(
        Text(TEXT("[%5s][%-5s][%.2s][%5.1s]"), TEXT("abc"), TEXT("abc"), TEXT("abc"), TEXT("abc")),
        TEXT("[  abc][abc  ][ab][    a]"));
    EXPECT_EQ(Text(TEXT("%c%c%%%3c|%-3c|"), 'x', 0x20AC, 'y', 'z'), TEXT("x\u20ac%  y|z  |"));
    const WCHAR open_end[2] = {'o', 'k'};
    EXPECT_EQ(Text(TEXT("%.2s"), open_end), TEXT("ok"));
    EXPECT_EQ(Text(TEXT("%s|%.3s|%hs"), static_cast<WCHAR*>(nullptr), static_cast<WCHAR*>(nullptr),
                   static_cast<char*>(nullptr)),
              TEXT("(null)|(nu|(null)"));
}

TEST(WidePrintf, Reals) {
    EXPECT_EQ(Text(TEXT("%f %.2f %Lf %8.1f|%-8.1f|%+.1f"), 1.5, 2.345, -0.25, 9.96, 9.96, 1.0),
              TEXT("1.500000 2.35 -0.250000     10.0|10.0    |+1.0"));
    EXPECT_EQ(Text(TEXT("%g %g %.3g %08.2f"), 0.5, 100000.0, 123.45, -3.14159),
              TEXT("0.5 100000 123 -0003.14"));
    EXPECT_EQ(Text(TEXT("%.0f"), 1e300).size(), 301u);
    EXPECT_EQ(Needed(TEXT("%.500f"), 1e300), 802);
}

TEST(WidePrintf, CountsAndRoom) {
    EXPECT_EQ(Needed(TEXT("%s-%d"), TEXT("abc"), 12), 6);
    EXPECT_EQ(Needed(TEXT("%100000d"), 1), 100000);
    EXPECT_EQ(Format(4, TEXT("%s"), TEXT("abc")).text, Wide(TEXT("abc\0~"), 5));
    // The exact fit has no room for the zero and still counts.
    EXPECT_EQ(Format(3, TEXT("%s"), TEXT("abc")).count, 3);
    EXPECT_EQ(Format(3, TEXT("%s"), TEXT("abc")).text, TEXT("abc~"));
    EXPECT_LT(Format(2, TEXT("%s"), TEXT("abc")).count, 0);
    EXPECT_EQ(Format(2, TEXT("%s"), TEXT("abc")).text[2], WCHAR{'~'});
    EXPECT_LT(Format(8, TEXT("%20d"), 1).count, 0);
}
