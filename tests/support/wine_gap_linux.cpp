#include "support/wine_gap.h"

namespace test {

bool UnderWine() {
    return false;
}

}  // namespace test
