// Splits command lines into arguments by the rules of Windows.
//
// Blanks and tabs outside of quotes separate arguments. 2n backslashes in front of a quote are n
// backslashes, and the quote opens or closes; 2n + 1 are n backslashes and a quote that belongs to
// the argument. Backslashes elsewhere stand for themselves. Programs read two quotes in a row
// inside of quotes in two ways; see below.
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

// Quotes `value` so that both rules read it as one argument with exactly this value.
TText QuotedArgument(TUnits value);

}  // namespace driver_global
