// Value names: enumerations, flag sets, booleans.
#include "mox_classes/format/define_table.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "support/string_print.h"

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
    EXPECT_EQ(BoolToString(true), TEXT("True"));
    EXPECT_EQ(BoolToString(false), TEXT("False"));
}
