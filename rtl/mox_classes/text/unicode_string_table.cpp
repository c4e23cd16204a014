// Strings of a module's string table.
#include <windows.h>

#include <cstring>

#include "mox_classes/text/unicode_string.h"

namespace System {

namespace {

// Entry `index` of a block of a string table. A block holds 16 texts; a 16-bit length stands in
// front of each. Empty when the block ends before the entry.
UnicodeString StringTableEntry(const char* block, std::size_t bytes, int index) {
    for (;;) {
        WORD length = 0;
        if (bytes < sizeof length) return UnicodeString();
        std::memcpy(&length, block, sizeof length);
        const std::size_t size = std::size_t{length} * sizeof(WCHAR);
        if (bytes - sizeof length < size) return UnicodeString();
        block += sizeof length;
        if (index-- == 0) {
            UnicodeString text;
            if (length == 0) return text;
            text.SetLength(length);
            std::memcpy(text.data(), block, size);
            return text;
        }
        block += size;
        bytes -= sizeof length + size;
    }
}

}  // namespace

UnicodeString& UnicodeString::LoadStringW(HINSTANCE module, int id) {
    if (id < 0 || id > 0xFFFF) return *this;
    const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(id / 16 + 1), RT_STRING);
    if (resource == nullptr) return *this;
    const HGLOBAL loaded = LoadResource(module, resource);
    const void* block = loaded == nullptr ? nullptr : LockResource(loaded);
    if (block == nullptr) return *this;
    UnicodeString text = StringTableEntry(static_cast<const char*>(block),
                                          SizeofResource(module, resource), id % 16);
    if (!text.IsEmpty()) swap(text);
    return *this;
}

UnicodeString UnicodeString::LoadStr(HINSTANCE module, int id) {
    UnicodeString text;
    text.LoadStringW(module, id);
    return text;
}

}  // namespace System
