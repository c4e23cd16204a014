// The string byte encoding under any tag table: hostile records, and texts there and back.
#include "mox_classes/string_encoding.h"

#include "support/input.h"

using namespace System;

static void ReadAll(fuzz::Buffer bytes) {
    UnicodeString text;
    const auto size = static_cast<ULONG>(bytes.size());
    for (ULONG at = 0, used = 0; BinToStr(bytes.data() + at, size - at, used, text); at += used) {
        fuzz::Require(used >= 1 && used <= size - at, "a record lies inside");
    }
    unsigned char *head = bytes.data(), *tail = head + size;
    for (const unsigned char* before = head; BufferToString(head, tail, text); before = head) {
        fuzz::Require(before < head && head <= tail, "head and tail move inwards");
    }
}

static void RoundTrip(const UnicodeString& text, TCodePage code_page) {
    ULONG needed = 0, used = 0;
    UnicodeString read;
    StrToBin(nullptr, 0, needed, code_page, text);
    fuzz::Buffer space(needed);
    fuzz::Require(!StrToBin(space.data(), needed - 1, needed, code_page, text), "a byte short");
    fuzz::Require(StrToBin(space.data(), needed, needed, code_page, text), "the exact size");
    fuzz::Require(BinToStr(space.data(), needed, used, read) && used == needed, "a whole record");
    if (code_page == kCodePageUtf16) fuzz::Require(fuzz::Same(read, text), "every unit");
    unsigned char *head = space.data(), *tail = head + needed;
    if (StringToBuffer(head, tail, text)) ReadAll(space);
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    fuzz::TakeTagTable(input);
    const auto rest = input.Rest();
    ReadAll({rest.begin(), rest.end()});
    for (const auto page : {TCodePage{}, kCodePageUtf8, kCodePageUtf16}) {
        RoundTrip(fuzz::Text(rest), page);
    }
    return 0;
}
