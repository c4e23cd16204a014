// A host root of its own for one test: an empty registry, an empty drive C. On Windows, where the
// system keeps all that, only the product's own registry keys are taken away.
#pragma once

#include <string>

namespace test {

/// Sets QV_HOST_ROOT to a new temporary folder; the end removes the folder and brings the old value
/// back. For one test at a time.
class FreshHostRoot {
  public:
    FreshHostRoot();
    ~FreshHostRoot();
    FreshHostRoot(const FreshHostRoot&) = delete;
    FreshHostRoot& operator=(const FreshHostRoot&) = delete;

    /// The folder, without a separator at its end; empty on Windows.
    const std::string& Folder() const { return folder_; }

  private:
    std::string folder_, before_;
    bool had_before_ = false;
};

}  // namespace test
