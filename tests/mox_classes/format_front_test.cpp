// The typed front of the formatter: which argument kinds travel how.
#include <gtest/gtest.h>

#include "mox_classes/text/wide_format.h"

using System::FormatKindOf;
using System::TFormatKind;

TEST(FormatFront, EveryNumberTravelsAtTheWidthItsConversionReads) {
    enum class Small : unsigned char { One = 1 };
    EXPECT_EQ(FormatKindOf<Small>(), TFormatKind::Int32);
    EXPECT_EQ(FormatKindOf<DWORD>(), TFormatKind::Int32);
    EXPECT_EQ(FormatKindOf<std::int64_t>(), TFormatKind::Int64);
    EXPECT_EQ(FormatKindOf<long double>(), TFormatKind::Double);
    EXPECT_EQ(FormatKindOf<const WCHAR*>(), TFormatKind::Text);
    EXPECT_EQ(FormatKindOf<HANDLE>(), TFormatKind::Pointer);
}

TEST(FormatFront, ATextThatAsksForOtherArgumentsIsRefused) {
    const WCHAR* const fits[] = {
        TEXT("%d of %s, %5.2f"), TEXT("%-05hd%ls%Lg"),  TEXT("%% %I32u %s %%%E"),
        TEXT("%lx|%s|%.3lf"),    TEXT("%c%4096s%4.2e"),
    };
    for (const WCHAR* format : fits) EXPECT_TRUE(System::FormatFits(format, 1, TEXT("a"), 2.0));
    const WCHAR* const refused[] = {
        TEXT("%d %s"),         TEXT("%d %s %f %d"),     TEXT("%s %s %f"),
        TEXT("%I64d %s %f"),   TEXT("%*d %s %f"),       TEXT("%n %s %f"),
        TEXT("%d %hs %f"),     TEXT("%d %S %f"),        TEXT("%d %s %4097f"),
        TEXT("%d %s %.4097f"), TEXT("%d %s %f %"),      TEXT("%d %s %5"),
        TEXT("%Ld %s %f"),     TEXT("%d %s %k"),        TEXT("%lld %s %f"),
        TEXT("%d %p %f"),      TEXT("%d %s %5.5.5.5f"), TEXT("%99999999999999999999d %s %f"),
    };
    for (const WCHAR* format : refused) EXPECT_FALSE(System::FormatFits(format, 1, TEXT("a"), 2.0));
    EXPECT_TRUE(System::FormatFits(nullptr));
    EXPECT_FALSE(System::FormatFits(TEXT("%s")));
}
