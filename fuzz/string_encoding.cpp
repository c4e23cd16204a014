// The string byte encoding under any tag table: hostile records, and texts there and back.
#include "mox_classes/format/string_encoding.h"

#include "support/input.h"

using namespace System;

static void ReadAll(fuzz::Buffer bytes) {
    UnicodeString text;
    const auto size = static_cast<ULONG>(bytes.size());
    for (ULONG at = 0, used = 0; BinToStr(bytes.data() + at, size - at, used, text); at += used)
        fuzz::Require(used >= 1 && used <= size - at, "a record lies inside");
    unsigned char *head = bytes.data(), *tail = head + size;
    for (const unsigned char* before = head; BufferToString(head, tail, text); before = head)
        fuzz::Require(before < head && head <= tail, "head and tail move inwards");
}

static void RoundTrip(const UnicodeString& text, TCodePage page) {
    ULONG needed = 0, used = 0;
    UnicodeString read, unpacked;
    StrToBin(nullptr, 0, needed, page, text);
    fuzz::Buffer space(needed);
    fuzz::Require(!StrToBin(space.data(), needed - 1, needed, page, text), "a byte short");
    fuzz::Require(StrToBin(space.data(), needed, needed, page, text), "the exact size");
    fuzz::Require(BinToStr(space.data(), needed, used, read) && used == needed, "a whole record");
    fuzz::Require(page != kCodePageUtf16 || fuzz::Same(read, text), "every unit");
    unsigned char *head = space.data(), *tail = head + needed, *first = head, *last = tail;
    if (!StringToBuffer(head, tail, text)) return;
    fuzz::Require(BufferToString(first, last, unpacked) && first == head && last == tail, "packed");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    fuzz::TakeTagTable(input);
    const auto rest = input.Rest();
    ReadAll({rest.begin(), rest.end()});
    for (int page : {0, 65001, 1200}) RoundTrip(fuzz::Text(rest), static_cast<TCodePage>(page));
    return 0;
}
