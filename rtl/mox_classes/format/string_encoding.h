// A compact byte form of strings: a tag, a length of one to four bytes and the text in UTF-8 or
// UTF-16, whichever is shorter. docs/formats/string_encoding.md shows the bytes.
//
// The tag values stand in a process-wide table that is read without a lock. Bytes that are read may
// come from anywhere: what is cut off or does not make sense gives false.
#pragma once

#include <windows.h>

#include "mox_classes/text/code_page.h"
#include "mox_classes/text/unicode_string.h"
#include "qv_api.h"

// Replaces the tag values: mask, codes of length sizes 1 to 4, codes of UTF-8, UTF-16 and a
// reserved encoding. 1 when they make a table, else 0 and nothing changes. To be called at
// start-up: what was written with one table can only be read with the same.
extern "C" QV_API int SetDefaultStringTags(const unsigned char tags[8]);

namespace System {

// Bytes of the length field for a length of `n`, 1 to 4.
QV_API int GetBytesNeeded(ULONG n);
// Payload length of `s`: code units for code page 1200, bytes for 65001; any other code page is set
// to that of the two with the shorter payload. 0 for the empty string, whose code page stays.
QV_API int GetMinUnicodeLength(const UnicodeString& s, TCodePage& code_page);

// Writes one record of `needed` bytes at the start of `buffer`. False, with last error 122, when it
// does not fit into `size` bytes; `needed` is set then, too.
QV_API bool StrToBin(void* buffer, ULONG size, ULONG& needed, TCodePage& code_page,
                     const UnicodeString& s);
// Reads what StrToBin wrote; `used` is the size of the record. False, with `s` empty and `used` as
// it was, sets the last error: 122 for a record that is cut off or has no valid length size, 13 for
// one that cannot be text. Success sets it to 0.
[[nodiscard]] QV_API bool BinToStr(const void* buffer, ULONG size, ULONG& used, UnicodeString& s);

// Packs many strings into one buffer: tags and lengths grow from `head` upwards, texts from `tail`
// downwards. False, and nothing changes, when the space between them is too small.
[[nodiscard]] QV_API bool StringToBuffer(unsigned char*& head, unsigned char*& tail,
                                         const UnicodeString& s);
// Reads the next string, from the head and tail where packing began. False as for BinToStr, with
// head and tail as they were.
[[nodiscard]] QV_API bool BufferToString(unsigned char*& head, unsigned char*& tail,
                                         UnicodeString& s);

}  // namespace System
