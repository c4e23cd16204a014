// Command lines split into arguments by the rules of Windows.
//
// Blanks and tabs outside quotes separate. 2n backslashes before a quote are n backslashes and a
// quote that opens or closes; 2n + 1 are n backslashes and a quote of the argument; others stand
// for themselves. Two quotes in a row inside quotes are read in two ways.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace driver_global {

using TUnits = std::basic_string_view<WCHAR>;
using TText = std::basic_string<WCHAR>;

enum class TQuoteRule {
    Program,  // of programs' run-time libraries: a quote of the argument, which goes on in quotes
    Shell,    // of CommandLineToArgvW: a quote of the argument, and the end of the quotes
};

struct TArgument {
    std::size_t begin, end;  // where it stands
    TText value;             // what the program gets
};

std::vector<TArgument> SplitArguments(TUnits text, TQuoteRule rule);

// `value` as one argument that both rules give back, whatever it holds.
TText QuotedArgument(TUnits value);

}  // namespace driver_global
