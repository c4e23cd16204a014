// Converts text whose characters have one or two bytes in UTF-8, in any mixture: Latin with
// accents, Greek, Cyrillic, Hebrew, Arabic. Shuffle instructions move the bytes. Only processors
// with SSSE3 have them, so the choice is made at run time. Prose with accents takes 0.4 of the time
// of the loop over units.
#pragma once

#include <windows.h>

#include <cstddef>

namespace host {

// Whether this processor has SSSE3.
bool CanShuffle();

struct Progress {
    std::size_t read;
    std::size_t written;
};

// Convert from the start of the text up to the first other character, or to the end of the buffer.
// They may write garbage behind their result, so the caller must convert the rest of the text into
// the same buffer. Call them only when CanShuffle().
Progress DecodeShuffled(const char* text, std::size_t left, WCHAR* out, std::size_t room);
Progress EncodeShuffled(const WCHAR* text, std::size_t left, char* out, std::size_t room);

}  // namespace host
