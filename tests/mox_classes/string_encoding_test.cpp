// The byte encoding of strings: both layouts, replaced tags, damage.
#include "mox_classes/format/string_encoding.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "support/format_page.h"
#include "support/string_print.h"

using namespace System;
using TBytes = std::vector<unsigned char>;

namespace {

TBytes Encoded(const UnicodeString& s, TCodePage code_page = kCodePageAnsi) {
    TBytes bytes(100000);
    ULONG needed = 0;
    EXPECT_TRUE(StrToBin(bytes.data(), 100000, needed, code_page, s));
    bytes.resize(needed);
    return bytes;
}

// The text of a record; "failed" and the last error when it cannot be read.
UnicodeString Decoded(const TBytes& bytes) {
    UnicodeString s(TEXT("old"));
    ULONG used = 99;
    SetLastError(7);
    if (BinToStr(bytes.data(), static_cast<ULONG>(bytes.size()), used, s)) {
        EXPECT_EQ(used, bytes.size());
        EXPECT_EQ(GetLastError(), 0u);
        return s;
    }
    EXPECT_TRUE(s.IsEmpty() && used == 99);
    return UnicodeString().sprintf(TEXT("failed %u"), GetLastError());
}

// The same through the split layout, whose bytes are those of the record for a single string.
UnicodeString Unpacked(TBytes bytes) {
    unsigned char* head = bytes.data();
    unsigned char* tail = head + bytes.size();
    UnicodeString s(TEXT("old"));
    if (BufferToString(head, tail, s)) {
        EXPECT_TRUE(head == tail && GetLastError() == 0);
        return s;
    }
    EXPECT_TRUE(s.IsEmpty() && head == bytes.data() && tail == head + bytes.size());
    return UnicodeString().sprintf(TEXT("failed %u"), GetLastError());
}

class Tags : public testing::Test {
  protected:
    static constexpr unsigned char kDefault[8] = {0x0F, 1, 2, 3, 4, 0x10, 0x30, 0x50};
    ~Tags() override { SetDefaultStringTags(kDefault); }
};

}  // namespace

TEST(StringEncoding, RecordsOfThePage) {
    const UnicodeString kanji(TEXT("\x65E5\x672C"));
    EXPECT_EQ(Encoded(TEXT("abc")), test::PageDump("string_encoding.md", 0));
    EXPECT_EQ(Decoded(test::PageDump("string_encoding.md", 0)), TEXT("abc"));
    EXPECT_EQ(Encoded(kanji), test::PageDump("string_encoding.md", 1));
    EXPECT_EQ(Decoded(test::PageDump("string_encoding.md", 1)), kanji);
}

TEST(StringEncoding, TheBufferOfThePage) {
    TBytes bytes(16);
    unsigned char* head = bytes.data();
    unsigned char* tail = head + 16;
    EXPECT_TRUE(StringToBuffer(head, tail, TEXT("abc")));
    EXPECT_TRUE(StringToBuffer(head, tail, TEXT("xy")));
    EXPECT_EQ(head - bytes.data(), 4);
    EXPECT_EQ(tail - bytes.data(), 11);
    EXPECT_EQ(bytes, test::PageDump("string_encoding.md", 2));
    EXPECT_FALSE(StringToBuffer(head, tail, TEXT("123456")));
    EXPECT_TRUE(StringToBuffer(head, tail, TEXT("12345")));
    EXPECT_FALSE(StringToBuffer(head, tail, UnicodeString()));

    head = bytes.data();
    tail = head + 16;
    UnicodeString s;
    for (const WCHAR* text : {TEXT("abc"), TEXT("xy"), TEXT("12345")}) {
        EXPECT_TRUE(BufferToString(head, tail, s));
        EXPECT_EQ(s, text);
    }
    EXPECT_FALSE(BufferToString(head, tail, s));
    EXPECT_EQ(GetLastError(), 122u);
}

TEST(StringEncoding, EveryLengthSizeAndEncodingComesBack) {
    for (const int length : {0, 1, 255, 256, 300, 65535, 65536}) {
        for (const WCHAR unit : {TEXT('x'), TEXT('\xE9'), TEXT('\x65E5')}) {
            const UnicodeString text = UnicodeString::StringOfChar(unit, length);
            if (length > 40000 && unit != 'x') continue;
            const TBytes bytes = Encoded(text);
            EXPECT_EQ(Decoded(bytes), text);
            EXPECT_EQ(Unpacked(bytes), text);
        }
    }
    EXPECT_EQ(Encoded(UnicodeString()), TBytes{0});
    EXPECT_EQ(Encoded(UnicodeString::StringOfChar(TEXT('\x65E5'), 200)).size(), 402u);
    // Both are 2 bytes long: UTF-16 is chosen.
    EXPECT_EQ(Encoded(TEXT("\xE9")), (TBytes{0x31, 1, 0xE9, 0}));
    EXPECT_EQ(Encoded(TEXT("\xE9"), kCodePageUtf8), (TBytes{0x11, 2, 0xC3, 0xA9}));
    EXPECT_EQ(Encoded(TEXT("a"), kCodePageUtf16), (TBytes{0x31, 1, 'a', 0}));
    EXPECT_EQ(Encoded(UnicodeString(TEXT("a\0b"), 3)), (TBytes{0x11, 3, 'a', 0, 'b'}));
}

TEST(StringEncoding, ABufferOneByteTooSmall) {
    unsigned char bytes[8] = {};
    ULONG needed = 0;
    TCodePage code_page = kCodePageAnsi;
    EXPECT_FALSE(StrToBin(bytes, 4, needed, code_page, TEXT("abc")));
    EXPECT_EQ(GetLastError(), 122u);
    EXPECT_EQ(needed, 5u);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_FALSE(StrToBin(nullptr, 0, needed, code_page, UnicodeString()));
    EXPECT_EQ(needed, 1u);
    SetLastError(7);
    EXPECT_TRUE(StrToBin(bytes, 5, needed, code_page, TEXT("abc")));
    EXPECT_EQ(GetLastError(), 7u);
}

TEST(StringEncoding, CutAnywhereGivesError122) {
    for (const WCHAR* text : {TEXT("abc"), TEXT("\x65E5\x672C"), TEXT("x")}) {
        const TBytes whole = Encoded(text);
        for (auto end = whole.begin(); end != whole.end(); ++end) {
            EXPECT_EQ(Decoded({whole.begin(), end}), TEXT("failed 122"));
            EXPECT_EQ(Unpacked({whole.begin(), end}), TEXT("failed 122"));
        }
    }
}

TEST(StringEncoding, HostileBytes) {
    const auto check = [](const TBytes& bytes, const WCHAR* outcome) {
        EXPECT_EQ(Decoded(bytes), outcome);
        EXPECT_EQ(Unpacked(bytes), outcome);
    };
    for (const TBytes& damaged :
         {TBytes{0x51, 1, 'a'}, TBytes{0x21, 1, 'a'}, TBytes{0x11, 0},
          TBytes{0x14, 0xFF, 0xFF, 0xFF, 0xFF, 'a'}, TBytes{0x34, 0, 0, 0, 0x80, 'a', 0}}) {
        check(damaged, TEXT("failed 13"));
    }
    for (const TBytes& cut :
         {TBytes{0x34, 0xFF, 0xFF, 0xFF, 0x7F, 'a', 0}, TBytes{0x14, 0xFF, 0xFF, 0xFF, 0x7F},
          TBytes{0x10, 1, 'a'}, TBytes{0x15, 1, 'a'}, TBytes{0x12, 1}}) {
        check(cut, TEXT("failed 122"));
    }
    check({0x31, 0}, TEXT(""));
    check({0x12, 1, 0, 'a'}, TEXT("a"));
}

TEST_F(Tags, TablesThatAreRefused) {
    const unsigned char refused[][8] = {
        {0x0F, 1, 2, 3, 0, 0x10, 0x30, 0x50},    {0x0F, 1, 2, 3, 3, 0x10, 0x30, 0x50},
        {0x0F, 1, 2, 3, 0x14, 0x10, 0x30, 0x50}, {0x0F, 1, 2, 3, 4, 0x10, 0x10, 0x50},
        {0x0F, 1, 2, 3, 4, 0x11, 0x30, 0x50},    {0, 1, 2, 3, 4, 0x10, 0x30, 0x50},
    };
    for (const auto& tags : refused) EXPECT_EQ(SetDefaultStringTags(tags), 0);
    EXPECT_EQ(SetDefaultStringTags(nullptr), 0);
    EXPECT_EQ(Encoded(TEXT("abc"))[0], 0x11);
    const unsigned char narrow_mask[8] = {0x07, 1, 2, 3, 4, 0x10, 0x30, 0x50};
    EXPECT_EQ(SetDefaultStringTags(narrow_mask), 1);
}

TEST_F(Tags, LengthCodesInAnotherOrder) {
    const unsigned char turned[8] = {0x0F, 4, 3, 2, 1, 0x20, 0x40, 0x80};
    ASSERT_EQ(SetDefaultStringTags(turned), 1);
    const TBytes bytes = Encoded(TEXT("abcde"));
    EXPECT_EQ(bytes[0], 0x24);
    EXPECT_EQ(Decoded(bytes), TEXT("abcde"));
    EXPECT_EQ(Decoded({0x14, 1, 'a'}), TEXT("failed 13"));
}
