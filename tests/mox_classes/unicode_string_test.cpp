// The string: null against a buffer of length 0, sharing and copy on write, limits, sources.
#include "mox_classes/text/unicode_string.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <new>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "mox_classes/memory/memory.h"
#include "mox_classes/text/strhlpr.h"
#include "mox_classes/text/utf8_text.h"
#include "support/format_page.h"
#include "support/string_print.h"
#include "support/thrown_text.h"

using test::ThrownText;

namespace {

UnicodeString FromUtf32(std::vector<unsigned int> text, long long count = -1) {
    text.push_back(0);
    return UnicodeString(text.data(), count);
}

// Takes over a copy of a block of 20 bytes, as another module would lay it out.
UnicodeString FromBlock(const void* bytes) {
    char* block = static_cast<char*>(System::GetMemory(20));
    std::memcpy(block, bytes, 20);
    block += sizeof(System::StrRec);
    UnicodeString text;
    std::memcpy(static_cast<void*>(&text), &block, sizeof block);
    return text;
}

}  // namespace

TEST(UnicodeString, NothingIsNull) {
    const WCHAR* no_text = nullptr;
    const UnicodeString text(TEXT("abc"));
    for (const UnicodeString& s :
         {UnicodeString(), UnicodeString(""), UnicodeString(TEXT("")), UnicodeString(no_text),
          UnicodeString(TEXT("abc"), 0), UnicodeString(TEXT("abc"), -2), FromUtf32({'a'}, 0),
          text.SubString(4, 1), UnicodeString(TEXT("   ")).Trim(),
          UnicodeString::StringOfChar('x', -1)}) {
        EXPECT_TRUE(s.IsEmpty());
        EXPECT_EQ(s.Length() + s.RefCount(), 0);
        EXPECT_EQ(s.CodePage(), 1200);
        EXPECT_EQ(s.ElementSize(), 2);
        EXPECT_EQ(s.data(), nullptr);
        EXPECT_EQ(s.t_str()[0], 0);
    }
}

TEST(UnicodeString, LengthZeroIsABuffer) {
    for (UnicodeString s :
         {UnicodeString().SetLength(0), UnicodeString().Unique(),
          UnicodeString(TEXT("abc")).Delete(1, 3), UnicodeString::StringOfChar('x', 0),
          UnicodeString().LowerCase(), UnicodeString("abc", 0),
          UnicodeString().sprintf(TEXT("%s"), TEXT(""))}) {
        EXPECT_TRUE(!s.IsEmpty() && s.Length() == 0 && s.t_str()[0] == 0);
        EXPECT_EQ(s.CodePage(), 1200);
    }

    const UnicodeString null;
    const UnicodeString zero = UnicodeString().SetLength(0);
    EXPECT_EQ(null.Compare(zero), -1);
    EXPECT_EQ(zero.Compare(null), 1);
    EXPECT_EQ(null.Compare(UnicodeString()), 0);
    EXPECT_TRUE(null == zero);
    EXPECT_EQ(zero.Trim().data(), zero.data());
}

TEST(UnicodeString, NumbersAndSingleUnits) {
    EXPECT_EQ(UnicodeString(static_cast<char>(0xE9))[1], 0xFFE9);
    EXPECT_EQ(UnicodeString(static_cast<unsigned short>(0xE9))[1], 0xE9);
    EXPECT_EQ(UnicodeString(static_cast<short>(-7)), TEXT("-7"));
    for (const int number : {9, 10, 99, 100, 999, 1000, 9999, 10000, -100000}) {
        EXPECT_EQ(UnicodeString(number), UnicodeString(std::to_string(number).c_str()));
    }
    EXPECT_EQ(UnicodeString(-2147483647 - 1), TEXT("-2147483648"));
    EXPECT_EQ(UnicodeString(4294967295u), TEXT("4294967295"));
    EXPECT_EQ(UnicodeString(-9223372036854775807LL - 1), TEXT("-9223372036854775808"));
    EXPECT_EQ(UnicodeString(18446744073709551615ULL), TEXT("18446744073709551615"));
    EXPECT_EQ(UnicodeString(1.5), TEXT("1.500000"));
    static_assert(!std::is_constructible_v<UnicodeString, std::nullptr_t>);
}

TEST(UnicodeString, Utf32) {
    EXPECT_EQ(FromUtf32({0xFFFF}), TEXT("\xFFFF"));
    EXPECT_EQ(FromUtf32({0x10000, 0x10FFFF}), TEXT("\xD800\xDC00\xDBFF\xDFFF"));
    EXPECT_EQ(FromUtf32({0x110000, 0xD800}), TEXT("\xFFFD\xD800"));
    EXPECT_EQ(FromUtf32({'a', 'b', 'c'}, 2), TEXT("ab"));
    EXPECT_EQ(FromUtf32({'a'}, 100), TEXT("a"));
}

TEST(UnicodeString, NarrowAndCountedText) {
    EXPECT_EQ(UnicodeString("abc"), TEXT("abc"));
    EXPECT_EQ(UnicodeString("abc", 2), TEXT("ab"));
    EXPECT_EQ(UnicodeString("abc", -1), TEXT("abc"));
    EXPECT_EQ(UnicodeString(std::string(1000, 'x').c_str()),
              UnicodeString::StringOfChar('x', 1000));
    EXPECT_EQ(UnicodeString(TEXT("a\0b"), 3).Length(), 3);
    EXPECT_TRUE(UnicodeString(TEXT("a\0b"), 3) == UnicodeString(TEXT("a\0c"), 3));
    const unsigned short units[] = {'x', 'y', 0};
    EXPECT_EQ(units + UnicodeString(TEXT("z")), TEXT("xyz"));
    EXPECT_EQ("n" + UnicodeString(TEXT("z")), TEXT("nz"));
}

TEST(UnicodeString, ACopyNeverSeesAChange) {
    const auto expect_kept = [](auto change) {
        UnicodeString changed(TEXT("abc"));
        const UnicodeString copy(changed);
        EXPECT_EQ(copy.RefCount(), 2);
        change(changed);
        EXPECT_EQ(copy, TEXT("abc"));
        EXPECT_EQ(copy.RefCount(), 1);
        EXPECT_EQ(changed.RefCount(), 1);
    };
    expect_kept([](UnicodeString& s) { s[1] = 'x'; });
    expect_kept([](UnicodeString& s) { s.Delete(1, 1); });
    expect_kept([](UnicodeString& s) { s += TEXT("d"); });
    expect_kept([](UnicodeString& s) { s.SetLength(1); });
    expect_kept([](UnicodeString& s) { s.printf(TEXT("%d"), 5); });
    expect_kept([](UnicodeString& s) { EXPECT_EQ(s.Unique(), TEXT("abc")); });
}

TEST(UnicodeString, PartsOfItself) {
    UnicodeString self(TEXT("ab"));
    EXPECT_EQ(self.Insert(self, 2), TEXT("aabb"));
    EXPECT_EQ(self += self, TEXT("aabbaabb"));
    EXPECT_EQ(self.SubString(-2147483647 - 1, 2147483647), self);
    EXPECT_GE(UnicodeString(TEXT("b")), UnicodeString(TEXT("a")));
    EXPECT_EQ(self.Trim().data(), self.data()) << "what stays is shared";
}

TEST(UnicodeString, FailuresLeaveTheStringAsItWas) {
    UnicodeString text(TEXT("abc"));
    EXPECT_EQ(ThrownText([&] { text[0]; }), TEXT("Out of index"));
    EXPECT_EQ(ThrownText([&] { text[4] = 'x'; }), TEXT("Out of index"));
    EXPECT_EQ(ThrownText([&] { text.SetLength(2147483648LL); }), TEXT("Out of length"));
    EXPECT_EQ(ThrownText([&] { text.SetLength(-2); }), TEXT("Out of length"));
    EXPECT_EQ(ThrownText([] { UnicodeString(TEXT("a"), 2147483648LL); }), TEXT("Out of length"));
    EXPECT_EQ(ThrownText([] { UnicodeString("a", 2147483648LL); }), TEXT("Out of length"));
    EXPECT_THROW(text.SetLength(2147483647), std::bad_alloc);
    const UnicodeString shared(text);
    EXPECT_THROW(text.SetLength(1073741900), std::bad_alloc);
    EXPECT_EQ(text.RefCount(), 2);
    EXPECT_EQ(text, TEXT("abc"));
}

TEST(UnicodeString, LengthsThatDoNotAddUp) {
    const struct {
        System::StrRec header{1200, 2, 1, 2147483647};
        WCHAR text[4] = TEXT("x");
    } longest;
    UnicodeString text = FromBlock(&longest);
    const WCHAR* const place = text.data();
    EXPECT_EQ(ThrownText([&] { text += TEXT("y"); }), TEXT("Integer overflow!"));
    EXPECT_EQ(ThrownText([&] { static_cast<void>(text + TEXT("y")); }), TEXT("Integer overflow!"));
    EXPECT_EQ(text.data(), place);
}

TEST(UnicodeString, TheBufferOfThePage) {
    const std::vector<unsigned char> bytes = test::PageDump("string.md", 0);
    ASSERT_EQ(bytes.size(), 20u);
    const UnicodeString made(TEXT("Ab\xE9"));
    EXPECT_EQ(std::memcmp(reinterpret_cast<const char*>(made.data()) - 12, bytes.data(), 20), 0);

    // A block that another module made is changed and freed here.
    UnicodeString read = FromBlock(bytes.data());
    const UnicodeString copy(read);
    EXPECT_EQ(copy.RefCount(), 2);
    read += TEXT("d");
    EXPECT_EQ(read, made + TEXT("d"));
    EXPECT_EQ(copy, made);
}

TEST(UnicodeString, Formatting) {
    UnicodeString text;
    EXPECT_EQ(text.printf(TEXT("%s-%d-%I64d"), UnicodeString("a"), 7, 1LL << 40), 17);
    EXPECT_EQ(text, TEXT("a-7-1099511627776"));
    EXPECT_EQ(text.cat_printf(TEXT("%05.1f"), 2.5), 5);
    EXPECT_EQ(text.cat_printf(TEXT("%s"), TEXT("")), 0);
    EXPECT_EQ(text, TEXT("a-7-1099511627776002.5"));
    for (const int length : {511, 512, 513, 5000}) {
        const UnicodeString part = UnicodeString::StringOfChar('x', length);
        EXPECT_EQ(text.printf(TEXT("<%s>"), part), length + 2);
        EXPECT_EQ(text, UnicodeString(TEXT("<")) + part + TEXT(">"));
        text = part;
        EXPECT_EQ(text.cat_printf(TEXT("%s"), text), length);
        EXPECT_EQ(text, part + part);
    }
}

TEST(Strhlpr, WorksOnReferences) {
    UnicodeString a(TEXT("ab")), b;
    Strhlpr::UnicodeAssign(b, a);
    EXPECT_EQ(b.data(), a.data());
    Strhlpr::UnicodeAppend(a, b);
    Strhlpr::UnicodeDelete(a, 1, 1);
    EXPECT_EQ(Strhlpr::UnicodeCat(a, b), TEXT("babab"));
    EXPECT_EQ(Strhlpr::UnicodePos(a, b), 2);
    EXPECT_TRUE(Strhlpr::UnicodeLess(b, a));
    Strhlpr::UnicodeFromPChar(b, "");
    Strhlpr::UnicodeFree(a);
    EXPECT_TRUE(a.IsEmpty() && b.IsEmpty());
}

namespace {

// Units up to the first 0.
int PlainOrder(const UnicodeString& a, const UnicodeString& b) {
    const int order = std::basic_string<WCHAR>(a.t_str()).compare(b.t_str());
    return order < 0 ? -1 : order > 0;
}

int PlainPos(const UnicodeString& text, const UnicodeString& sub) {
    const std::basic_string<WCHAR> units = text.t_str();
    return static_cast<int>(units.find(sub.t_str()) + 1);
}

// Units that repeat after seven, none of them 0.
UnicodeString Pattern(int length) {
    UnicodeString text = UnicodeString::StringOfChar('a', length);
    for (int i = 1; i <= length; ++i) text[i] = static_cast<WCHAR>(0x7F00 + 0x200 * (i % 7));
    return text;
}

void ExpectPlainOrder(const UnicodeString& a, const UnicodeString& b) {
    const int order = PlainOrder(a, b);
    ASSERT_EQ(a == b, order == 0);
    ASSERT_EQ(a < b, order < 0);
    ASSERT_EQ(a > b, order > 0);
}

}  // namespace

TEST(UnicodeString, ComparesAsUnitByUnitWhereverTextsDifferOrEnd) {
    for (const int length : {0, 1, 2, 7, 8, 9, 15, 16, 17, 24, 31, 33}) {
        const UnicodeString text = Pattern(length);
        for (int at = 1; at <= length; ++at) {
            for (const int unit : {0, 1, 0x7EFF, 0xFFFF}) {
                UnicodeString other = text;
                other[at] = static_cast<WCHAR>(unit);
                ExpectPlainOrder(text, other);
                ExpectPlainOrder(text, other.SubString(1, at));
                UnicodeString both_end = text;
                both_end[at] = 0;
                ExpectPlainOrder(both_end, other);
                ExpectPlainOrder(both_end, both_end.SubString(1, at) + TEXT("behind"));
                if (HasFatalFailure()) return;
            }
        }
        ExpectPlainOrder(text, text + TEXT("x"));
        ExpectPlainOrder(text, UnicodeString(text.t_str(), length));
    }
}

TEST(UnicodeString, PosFindsAsUnitByUnitAcrossAnyBorder) {
    for (const int length : {0, 1, 5, 8, 9, 16, 17, 25, 40}) {
        for (const int size : {1, 2, 3, 7, 8, 9, 17}) {
            // A needle whose ends are all over the text, one that is there once, one that is not.
            const UnicodeString needles[] = {Pattern(size), Pattern(size) + TEXT("!"),
                                             TEXT("?") + Pattern(size)};
            for (int at = 1; at <= length + 1; ++at) {
                UnicodeString text = Pattern(length).Insert(needles[1], at);
                for (const UnicodeString& needle : needles) {
                    ASSERT_EQ(text.Pos(needle), PlainPos(text, needle));
                }
                text[at] = 0;
                for (const UnicodeString& needle : needles) {
                    ASSERT_EQ(text.Pos(needle), PlainPos(text, needle));
                }
            }
        }
    }
}

TEST(UnicodeString, Utf8FillsTheExactBlockWhateverItHolds) {
    const std::tuple<const char*, int, int> rows[] = {{"a", 1, 1},
                                                      {"\xC3\xA9", 200, 200},
                                                      {"x\xE5\x8D\xB0", 300, 600},
                                                      {"\x80", 300, 300},
                                                      {"\xF5", 300, 300},
                                                      {"\xF0\x9F\x98\x80", 100, 200},
                                                      {"\xF0\x9Fzzz", 99, 396},
                                                      {"\xC3", 257, 257}};
    for (const auto& [piece, times, units] : rows) {
        std::string bytes;
        for (int i = 0; i < times; ++i) bytes += piece;
        const UnicodeString text =
            System::StringFromUtf8(bytes.data(), static_cast<int>(bytes.size()));
        EXPECT_EQ(text.Length(), units);
        EXPECT_EQ(text.t_str()[text.Length()], 0);
    }
    EXPECT_TRUE(System::StringFromUtf8("", 0).IsEmpty());
    EXPECT_TRUE(System::StringFromUtf8(nullptr, 5).IsEmpty());
}
