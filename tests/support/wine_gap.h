// Checks that Wine is known to fail. They hold on Windows and on the Linux host.
#pragma once

#include <string>

namespace test {

/// Whether the program runs on Wine's Windows.
bool UnderWine();

/// Expects `holds`, and under Wine the opposite: a gap that Wine has closed shows up and is taken
/// out of the tests.
void ExpectExceptOnWine(bool holds, const std::string& what);

}  // namespace test
