// The counted wide formatter: counts, room and texts that are none. text_calls.txt has the
// conversions.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdarg>
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

TEST(WidePrintf, NullsAndTextsWithoutAnEnd) {
    const WCHAR open_end[2] = {'o', 'k'};
    EXPECT_EQ(Text(TEXT("%.2s"), open_end), TEXT("ok"));
    EXPECT_EQ(Text(TEXT("%s|%.3s|%hs"), static_cast<WCHAR*>(nullptr), static_cast<WCHAR*>(nullptr),
                   static_cast<char*>(nullptr)),
              TEXT("(null)|(nu|(null)"));
}

TEST(WidePrintf, CountsAndRoom) {
    EXPECT_EQ(Needed(TEXT("%.0f"), 1e300), 301);
    EXPECT_EQ(Needed(TEXT("%.500f"), 1e300), 802);
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
