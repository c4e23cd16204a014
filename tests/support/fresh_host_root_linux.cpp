// A test's own host root on the Linux host.
#include "support/fresh_host_root.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace test {

FreshHostRoot::FreshHostRoot() {
    if (const char* before = std::getenv("QV_HOST_ROOT")) {
        had_before_ = true;
        before_ = before;
    }
    folder_ = std::filesystem::temp_directory_path() / "qv_test_XXXXXX";
    if (mkdtemp(folder_.data()) == nullptr) throw std::runtime_error("no temporary folder");
    setenv("QV_HOST_ROOT", folder_.c_str(), 1);
}

FreshHostRoot::~FreshHostRoot() {
    if (had_before_) {
        setenv("QV_HOST_ROOT", before_.c_str(), 1);
    } else {
        unsetenv("QV_HOST_ROOT");
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

}  // namespace test
