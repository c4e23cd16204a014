// Value names: enumerations, flag sets, booleans.
#include "mox_classes/format/define_table.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/string_print.h"

namespace {

constexpr TDefineConst kPapers[] = {
    {0, TEXT("DMPAPER_")}, {1, TEXT("LETTER")}, {9, TEXT("A4")}, {-4, TEXT("HIGH")}};
constexpr TDefineConst kFlags[] = {{1, TEXT("F_")}, {1, TEXT("A")}, {2, TEXT("B")}, {4, TEXT("C")}};
constexpr int kNoValue = 12345;

int PaperOf(const WCHAR* text) {
    const TDefineTable table(kPapers);
    int value = 0;
    return TryStringToDefine(table.Rows(), value, text) ? value : kNoValue;
}

}  // namespace

TEST(DefineTable, ReadsNamesInAnyCaseAndNumbers) {
    for (const WCHAR* text :
         {TEXT("a4"), TEXT("A4"), TEXT("dmpaper_a4"), TEXT("DMPAPER_A4"), TEXT("9")}) {
        EXPECT_EQ(PaperOf(text), 9) << testing::PrintToString(UnicodeString(text));
    }
    EXPECT_EQ(PaperOf(TEXT("high")), -4);
    EXPECT_EQ(PaperOf(TEXT("-4")), -4);
    EXPECT_EQ(PaperOf(TEXT("77")), 77) << "a number without a row";
    for (const WCHAR* text : {TEXT(" A4"), TEXT("A"), TEXT(""), TEXT("dmpaper_"), TEXT("7x")}) {
        EXPECT_EQ(PaperOf(text), kNoValue) << testing::PrintToString(UnicodeString(text));
    }
}

TEST(DefineTable, WritesNamesOrTheNumber) {
    const TDefineTable table(kPapers);
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

    int value = 0;
    EXPECT_TRUE(TryStringToDefine(table.Rows(), value, TEXT("c|f_a")));
    EXPECT_EQ(value, 5);
    EXPECT_FALSE(TryStringToFlags(table.Rows(), value, TEXT("A|X|B")));
    EXPECT_EQ(value, 1) << "the flags before the unknown name";
    EXPECT_TRUE(TryStringToFlags(table.Rows(), value, TEXT("")));
    EXPECT_EQ(value, 0);
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
        EXPECT_FALSE(StringToBool(no)) << testing::PrintToString(UnicodeString(no));
    }
    for (const WCHAR* yes : {TEXT("no"), TEXT("1"), TEXT("yes"), TEXT("")}) {
        EXPECT_TRUE(StringToBool(yes)) << testing::PrintToString(UnicodeString(yes));
    }
    EXPECT_EQ(BoolToString(StringToBool(BoolToString(true))), TEXT("True"));
    EXPECT_EQ(BoolToString(false), TEXT("False"));
}
