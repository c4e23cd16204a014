#include "support/wine_gap.h"

#include <gtest/gtest.h>

namespace test {

void ExpectExceptOnWine(bool holds, const std::string& what) {
    EXPECT_NE(holds, UnderWine()) << what;
}

}  // namespace test
