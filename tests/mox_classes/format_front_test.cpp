// The typed front of the formatter: which argument kinds travel how.
#include <gtest/gtest.h>

#include "mox_classes/wide_format.h"

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
