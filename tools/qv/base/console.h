// Output of the tool in UTF-8: data to standard output, messages to standard error.
#pragma once

#include <cstdint>
#include <string>

#include "base/exit_code.h"
#include "base/utf8_text.h"

namespace qv {

// Writes the bytes to standard output. Throws Failure when that fails, ClosedPipe when the reader
// has closed the pipe.
void Print(const std::string& text);
void PrintLine(const std::string& text);
// A message. Control characters other than line ends are escaped.
void PrintError(const std::string& text);

// "1 printer", "2 printers".
std::string Counted(std::uint64_t count, const std::string& noun);

}  // namespace qv
