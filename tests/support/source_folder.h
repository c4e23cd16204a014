// Where the checkout lies that the tests were built from: they read its samples and format pages.
#pragma once

#include <string>

namespace test {

/// Without a separator at its end.
std::string SourceFolder();

}  // namespace test
