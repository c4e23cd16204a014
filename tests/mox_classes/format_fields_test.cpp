// Named fields, templates and tags.
#include "mox_classes/format/format_fields.h"

#include <gtest/gtest.h>

#include <cstdarg>

#include "mox_classes/containers/string_list.h"
#include "mox_classes/format/template_string.h"
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
    const struct {
        const WCHAR* spec;
        TArgumentType type;
    } cases[] = {
        {TEXT("%d"), atInt32},    {TEXT("%5u"), atInt32},  {TEXT("%08X"), atInt32},
        {TEXT("%hd"), atInt32},   {TEXT("%ld"), atInt32},  {TEXT("%*d"), atInt32},
        {TEXT("%ll"), atInt64},   {TEXT("%L"), atInt64},   {TEXT("%lld"), atNone},
        {TEXT("%I64d"), atNone},  {TEXT("%f"), atDouble},  {TEXT("%5.2e"), atDouble},
        {TEXT("%G"), atDouble},   {TEXT("%Lf"), atDouble}, {TEXT("%s"), atPointer},
        {TEXT("%ls"), atPointer}, {TEXT("%p"), atPointer}, {TEXT("%hs"), atNone},
        {TEXT("%n"), atNone},     {TEXT("#d"), atNone},    {TEXT(""), atNone},
        {TEXT("%"), atNone},      {TEXT("%d "), atNone},   {nullptr, atNone},
    };
    for (const auto& row : cases) EXPECT_EQ(DetectArgumentType(row.spec), row.type);
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
    EXPECT_EQ(Tags(TEXT("Dear [name][x]!"), TEXT("John Smith")), TEXT("Dear \"John Smith\"!"));
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT("")), TEXT("\"\""));
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT("a\"b")), TEXT("\"a\"\"b\""));
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT(""), true), TEXT("\xFF02\xFF02"));
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT("a/b"), true), TEXT("a\xFF0F") TEXT("b"));
    EXPECT_EQ(Tags(TEXT("[name] [na"), TEXT("v")), TEXT("v [na"));
    EXPECT_EQ(Tags(TEXT("<<name>>"), TEXT("[name]"), false, TEXT("<<"), TEXT(">>")),
              TEXT("[name]"));
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT("v"), false, TEXT(""), TEXT("")), TEXT("[name]"));
    EXPECT_EQ(Tags(TEXT("[name]"), TEXT("v"), false, TEXT("["), TEXT("")), TEXT("[name]"));
}

TEST(TemplateString, NamesAndValues) {
    TStringList items;
    for (const WCHAR* text : {TEXT("a"), TEXT("1"), TEXT("b"), TEXT("x y"), TEXT("c"), TEXT("")}) {
        items.Add(text);
    }
    Classes::TStrings& list = items;
    EXPECT_EQ(BuildNameValueString(&list, TEXT(";"), TEXT("=")), TEXT("a=1;b=\"x y\";c=\"\""));
    EXPECT_EQ(list.Get(3), TEXT("\"x y\""));
    EXPECT_EQ(list.Get(5), TEXT("\"\""));
    items.Add(TEXT("d"));
    items.Put(1, TEXT("\"q"));
    EXPECT_EQ(BuildNameValueString(&list, TEXT(";"), TEXT("=")).SubString(1, 11),
              TEXT("a=\"\"\"q\";b=\""));
    EXPECT_EQ(list.GetCount(), 7);
    items.Clear();
    EXPECT_TRUE(BuildNameValueString(&list, TEXT(";"), TEXT("=")).IsEmpty());
}
