// Where records stand in a log file, and what of it cannot be read.
#pragma once

#include <windows.h>

#include <cstdint>

#include "mox_classes/text/unicode_string.h"

namespace Mox {

// Bytes of the file that were not shown.
struct TLogSkip {
    DWORD offset = 0;
    DWORD size = 0;  // 0: not a matter of certain bytes
    UnicodeString reason;
};

// Where a record stands in the file, and in the file's life.
struct TLogPlace {
    DWORD offset = 0;          // of its slot
    DWORD size = 0;            // of its slot
    std::uint64_t number = 0;  // the change counter when it had been written; 0: not known
};

// How the copy was made. Only in one that changed meanwhile may sound records look damaged. Failed:
// the file could not be read, so that nothing is known of it.
enum class TLogCopy { Locked, Unchanged, Changed, Failed };

}  // namespace Mox
