// Loads and unloads the library in a program that is not linked to it. The load call itself does
// not fail. The calls fail that the library makes while it is loaded and unloaded.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "faults/fault_loop.h"
#include "support/fresh_host_root.h"
#include "support/test_registry.h"

namespace faults {

namespace {

std::string LibraryFile() {
    const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe");
    return own.parent_path().parent_path() / "bin" / "libqv_rtl.so";
}

class LoadAndUnload : public Scenario {
  public:
    LoadAndUnload() : Scenario(Throws::Never) {
        test::TestKey(HKEY_LOCAL_MACHINE, TEXT("Software\\Halvorn\\Vantrel"))
            .Set(TEXT("Logfile"), TEXT("C:\\qv.log"));
    }
    void Run() override {
        loaded_ = false;
        void* const library = dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
        loaded_ = library != nullptr;
        unloaded_ = loaded_ && dlclose(library) == 0;
    }
    void Check(const Step&) override {
        EXPECT_TRUE(loaded_ && unloaded_);
        EXPECT_EQ(dlopen(file_.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
    }

  private:
    test::FreshHostRoot root_;
    const std::string file_ = LibraryFile();
    bool loaded_ = false;
    bool unloaded_ = false;
};

const Tests kLoadAndUnload("load and unload", New<LoadAndUnload>);

}  // namespace

}  // namespace faults
