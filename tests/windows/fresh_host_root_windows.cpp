// A test's own host root on Windows: the machine is the root.
#include "support/fresh_host_root.h"

namespace test {

FreshHostRoot::FreshHostRoot() = default;
FreshHostRoot::~FreshHostRoot() = default;

}  // namespace test
