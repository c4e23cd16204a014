// Command lines as lists of arguments, by the rules of Windows.
//
// Blanks and tabs outside quotes separate. 2n backslashes before a quote are n backslashes and a
// quote that opens or closes; 2n + 1 are n backslashes and a quote of the argument; others stand
// for themselves. The rules differ in what two quotes in a row mean inside quotes.
#pragma once

#include <vector>

#include "text/host_text.h"

namespace host {

enum class QuoteRule {
    kProgram,  // of programs' run-time libraries: a quote of the argument, which goes on in quotes
    kShell,    // of CommandLineToArgvW: a quote of the argument, and the end of the quotes
};

std::vector<WideString> SplitArguments(WideView text, QuoteRule rule);

}  // namespace host
