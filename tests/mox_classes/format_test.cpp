// Value names, named fields, templates and tags, and the typed front of the formatter below them.
#include "mox_classes/format/format_fields.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <utility>

#include "mox_classes/containers/string_list.h"
#include "mox_classes/format/define_table.h"
#include "mox_classes/format/template_string.h"
#include "mox_classes/text/wide_format.h"
#include "support/string_print.h"

namespace {

// Knows the fields a (x) and number (by its specification), and counts how often it is asked.
bool FillKnown(const UnicodeString& name, const UnicodeString& spec, UnicodeString& out,
               void* context) {
    if (context != nullptr) ++*static_cast<int*>(context);
    if (name == TEXT("a")) out = TEXT("x");
    if (name == TEXT("number")) return mox_format_field(out, TEXT("%d"), spec.t_str(), 42);
    return name == TEXT("a");
}

bool FillTag(const UnicodeString& name, UnicodeString& value, void* context) {
    value = *static_cast<const UnicodeString*>(context);
    return name == TEXT("name");
}

UnicodeString Tags(const WCHAR* text, const WCHAR* value, bool fix = false,
                   const WCHAR* open = TEXT("["), const WCHAR* close = TEXT("]")) {
    UnicodeString name_value(value);
    return ReplaceTags(text, FillTag, &name_value, fix, open, close);
}

UnicodeString Passed(const TFormatFields& fields, const WCHAR* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const UnicodeString result = mox_vformat(fields, format, arguments);
    va_end(arguments);
    return result;
}

}  // namespace

TEST(FormatFields, KindOfASpecification) {
    const std::pair<const WCHAR*, TArgumentType> rows[] = {
        {TEXT("%d"), atInt32},    {TEXT("%5u"), atInt32},  {TEXT("%08X"), atInt32},
        {TEXT("%hd"), atInt32},   {TEXT("%ld"), atInt32},  {TEXT("%*d"), atInt32},
        {TEXT("%ll"), atInt64},   {TEXT("%L"), atInt64},   {TEXT("%lld"), atNone},
        {TEXT("%I64d"), atNone},  {TEXT("%f"), atDouble},  {TEXT("%5.2e"), atDouble},
        {TEXT("%G"), atDouble},   {TEXT("%Lf"), atDouble}, {TEXT("%s"), atPointer},
        {TEXT("%ls"), atPointer}, {TEXT("%p"), atPointer}, {TEXT("%hs"), atNone},
        {TEXT("%n"), atNone},     {TEXT("#d"), atNone},    {TEXT(""), atNone},
        {TEXT("%"), atNone},      {TEXT("%d "), atNone},   {nullptr, atNone}};
    for (const auto& [spec, type] : rows) EXPECT_EQ(DetectArgumentType(spec), type);
}

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

TEST(FormatFields, HostileSpecificationsStay) {
    for (const WCHAR* spec : {TEXT("%*d"), TEXT("%n"), TEXT("%9999999d"), TEXT("%1%2%3%4%5%6%d"),
                              TEXT("%.*d"), TEXT("%%d"), TEXT("%5.5.5.5d"), TEXT("%-9 9d")}) {
        const UnicodeString text = UnicodeString(TEXT("{a")) + spec + TEXT("}");
        EXPECT_EQ(TFormatFields(text.t_str()).printf(text.t_str(), 1), text);
        UnicodeString out(TEXT("kept"));
        EXPECT_FALSE(mox_format_field(out, spec, nullptr, 1));
        EXPECT_FALSE(mox_format_field(out, TEXT("%d"), spec, 1));
        EXPECT_EQ(out, TEXT("kept"));
    }
    UnicodeString out;
    EXPECT_FALSE(mox_format_field(out, TEXT("%s"), nullptr, 1));
    EXPECT_FALSE(mox_format_field(out, TEXT("%d"), TEXT("%s"), 1));
    EXPECT_TRUE(mox_format_field(out, TEXT("%s"), TEXT("%4s"), UnicodeString(TEXT("x"))));
    EXPECT_EQ(out, TEXT("   x"));
}

TEST(FormatFields, SearchAndFill) {
    EXPECT_EQ(FindFormatField(TEXT("x{docname%s}"), TEXT("DocName")), 1);
    EXPECT_EQ(FindFormatField(TEXT("{{a}{b}"), TEXT("b")), 4);
    EXPECT_EQ(FindFormatField(TEXT("xy{z}"), UnicodeString()), 2);
    EXPECT_EQ(FindFormatField(TEXT("{z"), UnicodeString()), -1);
    EXPECT_EQ(FillFormat(TEXT("{a} {b}"), FillKnown, nullptr), TEXT("x {b}"));
    EXPECT_EQ(FillFormat(TEXT("{{a} {number%03d}{number%s} {a"), FillKnown, nullptr),
              TEXT("{x 042{number%s} {a"));
    EXPECT_TRUE(FillFormat(nullptr, FillKnown, nullptr).IsEmpty());
    int asked = 0;
    const UnicodeString braces = UnicodeString::StringOfChar('{', 100000);
    EXPECT_EQ(FillFormat(braces.t_str(), FillKnown, &asked), braces);
    EXPECT_EQ(asked, 0);
}

TEST(TemplateString, MarksAndFills) {
    EXPECT_EQ(TemplateString(TEXT("to {b} {number%d}"), FillKnown, nullptr),
              TEXT("=to {b} {number%d}"));
    EXPECT_EQ(TemplateString(TEXT("=to {a}"), FillKnown, nullptr), TEXT("=to {a}"));
    EXPECT_EQ(TemplateString(TEXT("to {b}"), FillKnown, nullptr), TEXT("to {b}"));
    EXPECT_EQ(TemplateStringFormat(TEXT("{a}"), FillKnown, nullptr), TEXT("{a}"));
    EXPECT_EQ(TemplateStringFormat(TEXT("={a}{b}"), FillKnown, nullptr), TEXT("x{b}"));
    EXPECT_EQ(TemplateStringSafeFormat(TEXT("{a}"), FillKnown, nullptr), TEXT("x"));
    EXPECT_EQ(TemplateStringSafeFormat(TEXT("=5"), FillKnown, nullptr), TEXT("5"));
    EXPECT_EQ(TemplateStringFindField(TEXT("=ab{c}"), TEXT("c")), 2);
    EXPECT_EQ(TemplateStringFindField(TEXT("ab{c}"), TEXT("c")), -1);
}

// As many fields as braces, one inside the other's name: only the innermost is known. The text is
// long enough that a search from every brace to the end would be noticed.
TEST(FormatFields, BracesInsideNames) {
    const int braces = 1 << 20;
    const UnicodeString head = UnicodeString::StringOfChar('{', braces - 1);
    const TFormatFields fields(TEXT("{a%d}"));
    EXPECT_EQ(fields.printf((head + TEXT("{a}-{a}}")).t_str(), 7), head + TEXT("7-7}"));
    EXPECT_EQ(FillFormat(TEXT("{{{a}{{a%s}"), FillKnown, nullptr), TEXT("{{x{x"));
    EXPECT_EQ(FindFormatField(TEXT("{{a}"), TEXT("{a")), 0);
}

TEST(TemplateString, Tags) {
    const std::tuple<const WCHAR*, const WCHAR*, const WCHAR*> rows[] = {
        {TEXT("Dear [name][x]!"), TEXT("John Smith"), TEXT("Dear \"John Smith\"!")},
        {TEXT("[name]"), TEXT(""), TEXT("\"\"")},
        {TEXT("[name]"), TEXT("a\"b"), TEXT("\"a\"\"b\"")},
        {TEXT("[name] [na"), TEXT("v"), TEXT("v [na")}};
    for (const auto& [text, value, result] : rows) EXPECT_EQ(Tags(text, value), result);
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT(""), true), TEXT("\xFF02\xFF02"));
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT("a/b"), true), TEXT("a\xFF0F") TEXT("b"));
    EXPECT_EQ(Tags(TEXT("<<name>>"), TEXT("[name]"), false, TEXT("<<"), TEXT(">>")),
              TEXT("[name]"));
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT("v"), false, TEXT(""), TEXT("]")), TEXT("[name]"));
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT("v"), false, TEXT("["), TEXT("")), TEXT("[name]"));
}

TEST(TemplateString, NamesAndValues) {
    TStringList items;
    Classes::TStrings& list = items;
    const auto joined = [&] { return BuildNameValueString(&list, TEXT(";"), TEXT("=")); };
    EXPECT_TRUE(joined().IsEmpty());
    for (const WCHAR* text : {TEXT("a b"), TEXT("1"), TEXT("b"), TEXT("x y"), TEXT("c"), TEXT(""),
                              TEXT("d"), TEXT("\"q")}) {
        items.Add(text);
    }
    EXPECT_EQ(joined(), TEXT("a b=1;b=\"x y\";c=\"\";d=\"\"\"q\""));
    EXPECT_EQ(list.Get(3), TEXT("\"x y\"")) << "the list keeps the quotes";
    items.Delete(7);
    EXPECT_GT(joined().Pos(TEXT(";d=\"\"")), 0);
}

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
    for (const WCHAR* format :
         {TEXT("%d of %s, %5.2f"), TEXT("%-05hd%ls%Lg"), TEXT("%% %I32u %s %%%E"),
          TEXT("%lx|%s|%.3lf"), TEXT("%c%4096s%4.2e")}) {
        EXPECT_TRUE(System::FormatFits(format, 1, TEXT("a"), 2.0)) << test::Shown(format);
    }
    const WCHAR* const refused[] = {
        TEXT("%d %s"),         TEXT("%d %s %f %d"),     TEXT("%s %s %f"),
        TEXT("%I64d %s %f"),   TEXT("%*d %s %f"),       TEXT("%n %s %f"),
        TEXT("%d %hs %f"),     TEXT("%d %S %f"),        TEXT("%d %s %4097f"),
        TEXT("%d %s %.4097f"), TEXT("%d %s %f %"),      TEXT("%d %s %5"),
        TEXT("%Ld %s %f"),     TEXT("%d %s %k"),        TEXT("%lld %s %f"),
        TEXT("%d %p %f"),      TEXT("%d %s %5.5.5.5f"), TEXT("%99999999999999999999d %s %f"),
    };
    for (const WCHAR* format : refused) {
        EXPECT_FALSE(System::FormatFits(format, 1, TEXT("a"), 2.0)) << test::Shown(format);
    }
    EXPECT_TRUE(System::FormatFits(nullptr));
    EXPECT_FALSE(System::FormatFits(TEXT("%s")));
}

namespace {

constexpr TDefineConst kPapers[] = {
    {0, TEXT("DMPAPER_")}, {1, TEXT("LETTER")}, {9, TEXT("A4")}, {-4, TEXT("HIGH")}};
constexpr TDefineConst kFlags[] = {{1, TEXT("F_")}, {1, TEXT("A")}, {2, TEXT("B")}, {4, TEXT("C")}};
constexpr int kNoValue = 12345;

}  // namespace

TEST(DefineTable, NamesInAnyCaseAndNumbers) {
    const TDefineTable table(kPapers);
    const std::pair<const WCHAR*, int> rows[] = {
        {TEXT("a4"), 9},         {TEXT("A4"), 9},      {TEXT("dmpaper_a4"), 9},
        {TEXT("DMPAPER_A4"), 9}, {TEXT("9"), 9},       {TEXT("high"), -4},
        {TEXT("-4"), -4},        {TEXT("77"), 77},     {TEXT(" A4"), kNoValue},
        {TEXT("A"), kNoValue},   {TEXT(""), kNoValue}, {TEXT("dmpaper_"), kNoValue},
        {TEXT("7x"), kNoValue}};
    for (const auto& [text, expected] : rows) {
        int value = kNoValue;
        EXPECT_EQ(TryStringToDefine(table.Rows(), value, text), expected != kNoValue);
        EXPECT_EQ(value, expected) << test::Shown(text);
    }
    EXPECT_EQ(DefineToString(table.Rows(), -4, true), TEXT("DMPAPER_HIGH"));
    EXPECT_EQ(DefineToString(table.Rows(), 1, false), TEXT("LETTER"));
    EXPECT_EQ(DefineToString(table.Rows(), 77, true), TEXT("77"));
    EXPECT_EQ(DefineToString(nullptr, -77, true), TEXT("-77"));
}

TEST(DefineTable, FlagSetsJoinNames) {
    const TDefineTable table(kFlags);
    EXPECT_EQ(DefineToString(table.Rows(), 7, false), TEXT("A|B|C"));
    EXPECT_EQ(FlagsToString(table.Rows(), 5, true), TEXT("F_A|F_C"));
    EXPECT_TRUE(FlagsToString(table.Rows(), 8, false).IsEmpty());
    const std::pair<const WCHAR*, int> rows[] = {{TEXT("c|f_a"), 5},
                                                 {TEXT("2|C"), 6},
                                                 {TEXT(""), 0},
                                                 {TEXT("A|X|B"), -1},
                                                 {TEXT("A|8"), -1}};
    for (const auto& [text, expected] : rows) {
        int value = 0;
        EXPECT_EQ(TryStringToDefine(table.Rows(), value, text), expected >= 0);
        EXPECT_EQ(value, expected >= 0 ? expected : 1) << "the flags before the unknown name";
    }
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

TEST(Booleans, WordsOfNo) {
    for (const WCHAR* no : {TEXT("0"), TEXT(" OFF\t"), TEXT("False")}) {
        EXPECT_FALSE(StringToBool(no)) << test::Shown(no);
    }
    for (const WCHAR* yes : {TEXT("no"), TEXT("1"), TEXT("yes"), TEXT(""), TEXT("OF")}) {
        EXPECT_TRUE(StringToBool(yes)) << test::Shown(yes);
    }
    EXPECT_FALSE(StringToBool(UnicodeString(TEXT("0\0x"), 3))) << "text ends at a zero";
    EXPECT_EQ(BoolToString(true), TEXT("True"));
    EXPECT_EQ(BoolToString(false), TEXT("False"));
}
