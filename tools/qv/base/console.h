// What the tool writes: data to standard output, messages to standard error, both in UTF-8.
#pragma once

#include <cstdint>
#include <string>

#include "base/exit_code.h"
#include "base/utf8_text.h"

namespace qv {

// Writes to standard output, byte for byte; throws Failure when that fails, ClosedPipe when nobody
// reads it.
void Print(const std::string& text);
void PrintLine(const std::string& text);
void PrintError(const std::string& text);

// "1 printer", "2 printers".
std::string Counted(std::uint64_t count, const std::string& noun);

}  // namespace qv
