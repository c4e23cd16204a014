// Named fields with their arguments, rows of value names, and the typed front of the formatter
// below them. text_calls.txt has what makes a text of texts.
#include "mox_classes/format/format_fields.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <utility>

#include "mox_classes/format/define_table.h"
#include "mox_classes/text/wide_format.h"
#include "support/string_print.h"

namespace {

// Counts how often it is asked.
bool Count(const UnicodeString&, const UnicodeString&, UnicodeString&, void* context) {
    ++*static_cast<int*>(context);
    return false;
}

UnicodeString Passed(const TFormatFields& fields, const WCHAR* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const UnicodeString result = mox_vformat(fields, format, arguments);
    va_end(arguments);
    return result;
}

}  // namespace

TEST(FormatFields, OneArgumentForEachName) {
    const WCHAR* const text = TEXT("{a%d} and {B%s} and {a%x}");
    TFormatFields fields;
    EXPECT_EQ(fields.Parse(text), 2);
    EXPECT_EQ(fields.Set(TEXT("A"))->FType, atInt32);
    EXPECT_EQ(fields.Set(TEXT("b"))->FSpec, TEXT("%s"));
    EXPECT_EQ(mox_format(fields, text, 10, TEXT("x")), TEXT("10 and x and a"));
    EXPECT_EQ(Passed(fields, text, 10, TEXT("x")), TEXT("10 and x and a"));
    EXPECT_EQ(mox_format(fields, TEXT("{b}{A}{c}{a%s}"), 10, TEXT("x")), TEXT("xa{c}{a%s}"));
    EXPECT_EQ(mox_format(fields, text, 10), TEXT("10 and {B%s} and a"));
    EXPECT_EQ(mox_format(fields, text, TEXT("x"), 10), text);
}

TEST(FormatFields, EveryKindAndAdjacentFields) {
    const WCHAR* const text = TEXT("{i%d}{w%05ll}{f%.2f}{none}{s%3s}{#x}{");
    const TFormatFields fields(text);
    EXPECT_EQ(Passed(fields, text, -17, 7000LL, -11.5, TEXT("z")),
              TEXT("-1707000-11.50{none}  z{#x}{"));
    EXPECT_EQ(fields.printf(TEXT("{w%L}{none}"), 1, 1LL << 40), TEXT("1099511627776{none}"));
}

TEST(FormatFields, AFieldFromASlotOf64Bits) {
    const TFormatFields fields(TEXT("{n%d}{text%s}{x}{real%.1f}{wide%ll}"));
    const WCHAR* const text = TEXT("abc");
    std::uint64_t slots[] = {0x100000005, reinterpret_cast<std::uintptr_t>(text), 0,
                             std::bit_cast<std::uint64_t>(2.5), 1ull << 40};
    const auto filled = [&](const WCHAR* name, const WCHAR* spec) {
        UnicodeString out(TEXT("-"));
        fields.FillSingleField(name, spec, static_cast<void*>(slots), out);
        return out;
    };
    EXPECT_EQ(filled(TEXT("N"), TEXT("")), TEXT("5"));
    EXPECT_EQ(filled(TEXT("n"), TEXT("%03x")), TEXT("005"));
    EXPECT_EQ(filled(TEXT("n"), TEXT("%s")), TEXT("-"));
    EXPECT_EQ(filled(TEXT("text"), TEXT("%5s")), TEXT("  abc"));
    EXPECT_EQ(filled(TEXT("x"), TEXT("")), TEXT("-"));
    EXPECT_EQ(filled(TEXT("real"), TEXT("")), TEXT("2.5"));
    EXPECT_EQ(filled(TEXT("wide"), TEXT("")), TEXT("1099511627776"));
}

TEST(FormatFields, AValueThatDoesNotFitLeavesTheOutput) {
    UnicodeString out(TEXT("kept"));
    EXPECT_FALSE(mox_format_field(out, TEXT("%*d"), nullptr, 1));
    EXPECT_FALSE(mox_format_field(out, TEXT("%s"), nullptr, 1));
    EXPECT_FALSE(mox_format_field(out, TEXT("%d"), TEXT("%s"), 1));
    EXPECT_EQ(out, TEXT("kept"));
    EXPECT_TRUE(mox_format_field(out, TEXT("%s"), TEXT("%4s"), UnicodeString(TEXT("x"))));
    EXPECT_EQ(out, TEXT("   x"));
}

// As many fields as braces, one inside the other's name: only the innermost is known. The text is
// long enough that a search from every brace to the end would be noticed.
TEST(FormatFields, BracesInsideNames) {
    const int braces = 1 << 20;
    const UnicodeString head = UnicodeString::StringOfChar('{', braces - 1);
    const TFormatFields fields(TEXT("{a%d}"));
    EXPECT_EQ(fields.printf((head + TEXT("{a}-{a}}")).t_str(), 7), head + TEXT("7-7}"));
    int asked = 0;
    EXPECT_EQ(FillFormat(head.t_str(), Count, &asked), head);
    EXPECT_EQ(asked, 0);
}

namespace {

constexpr TDefineConst kFlags[] = {{1, TEXT("F_")}, {1, TEXT("A")}, {2, TEXT("B")}, {4, TEXT("C")}};

}  // namespace

TEST(FormatFront, EveryNumberTravelsAtTheWidthItsConversionReads) {
    enum class Small : unsigned char { One = 1 };
    using System::TFormatKind;
    static_assert(System::FormatKindOf<Small>() == TFormatKind::Int32);
    static_assert(System::FormatKindOf<DWORD>() == TFormatKind::Int32);
    static_assert(System::FormatKindOf<std::int64_t>() == TFormatKind::Int64);
    static_assert(System::FormatKindOf<long double>() == TFormatKind::Double);
    static_assert(System::FormatKindOf<const WCHAR*>() == TFormatKind::Text);
    static_assert(System::FormatKindOf<HANDLE>() == TFormatKind::Pointer);
    EXPECT_TRUE(System::FormatFits(nullptr));
    EXPECT_FALSE(System::FormatFits(TEXT("%s")));
}

TEST(DefineTable, RowsAreTheExportedLayout) {
    const TDefineTable table(kFlags);
    const auto* bytes = reinterpret_cast<const char*>(table.Rows());
    int value;
    const WCHAR* name;
    std::memcpy(&value, bytes + 24, sizeof value);
    std::memcpy(&name, bytes + 28, sizeof name);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(UnicodeString(name), TEXT("B"));
    std::memcpy(&name, bytes + 52, sizeof name);
    EXPECT_EQ(name, nullptr);
}
