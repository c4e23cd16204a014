// What the benchmarks share: the process's host root and small conversions.
//
// A case is a function of Google Benchmark, registered under the name GROUP/ROW/SIDE; rows.txt
// says which cases stand in the table. A case does all the work that its row names; a result that
// is wrong ends it with state.SkipWithError, which fails the whole run.
#pragma once

#include <windows.h>

#include <benchmark/benchmark.h>

#include <string>
#include <string_view>

#include "mox_classes/text/unicode_string.h"

namespace bench {

// The throw-away host root of this run (QV_HOST_ROOT), without a separator at its end.
const std::string& HostRoot();

// ASCII text as a string of the library.
UnicodeString Wide(std::string_view ascii);

// A fresh name below the host root, for a file that does not exist yet.
std::string NewFileName();

// Nanoseconds of a clock that does not jump.
std::int64_t Now();

}  // namespace bench
