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
            EXPECT_EQ(Decoded(Encoded(text)), text);
        }
    }
    EXPECT_EQ(Encoded(UnicodeString::StringOfChar(TEXT('\x65E5'), 200)).size(), 402u);
    EXPECT_EQ(SetDefaultStringTags(nullptr), 0);
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
