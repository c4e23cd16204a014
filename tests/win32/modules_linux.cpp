// Loading of modules on the Linux host: DllMain, exports, string tables.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

#include "support/fresh_host_root.h"

namespace {

using Wide = std::basic_string<WCHAR>;

Wide ModuleFile() {
    WCHAR name[MAX_PATH];
    GetModuleFileNameW(nullptr, name, MAX_PATH);
    const Wide exe(name);
    return exe.substr(0, exe.find_last_of(TEXT('\\')) + 1) + TEXT("test_module.so");
}

class Modules : public testing::Test {
  protected:
    Modules() { setenv("qv_test_module_report", report_.c_str(), 1); }
    ~Modules() override { unsetenv("qv_test_module_report"); }
    std::string Report() const {
        std::ostringstream text;
        text << std::ifstream(report_).rdbuf();
        return text.str();
    }

    test::FreshHostRoot root_;
    std::string report_ = root_.Folder() + "/report";
};

}  // namespace

TEST_F(Modules, LoadAndFreeRunDllMain) {
    const HMODULE module = LoadLibraryW(ModuleFile().c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(Report(), "attach\n");
    EXPECT_EQ(LoadLibraryW(ModuleFile().c_str()), module);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(Report(), "attach\n");
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(Report(), "attach\ndetach\n");
}

TEST_F(Modules, DetachAtProcessExitFindsTheHostLayerAtWork) {
    const pid_t child = fork();
    if (child == 0) std::exit(LoadLibraryW(ModuleFile().c_str()) != nullptr ? 0 : 1);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Report(), "attach\ndetach\n");
}

TEST_F(Modules, ExportsAndStringTables) {
    const HMODULE module = LoadLibraryW(ModuleFile().c_str());
    ASSERT_NE(module, nullptr);
    const FARPROC answer = GetProcAddress(module, "TestModuleAnswer");
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(GetProcAddress(module, "malloc"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND});

    EXPECT_EQ(FindResourceW(module, MAKEINTRESOURCEW(9), RT_STRING), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});
    EXPECT_EQ(FindResourceW(nullptr, MAKEINTRESOURCEW(7), RT_STRING), nullptr);
    FreeLibrary(module);
}

TEST_F(Modules, WhatIsNoModuleIsRefused) {
    EXPECT_EQ(LoadLibraryW(TEXT("missing.dll")), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    std::ofstream(root_.Folder() + "/text.so") << "no module";
    const std::string name = root_.Folder() + "/text.so";
    EXPECT_EQ(LoadLibraryW(Wide(name.begin(), name.end()).c_str()), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_EXE_FORMAT});
    int no_module = 0;
    EXPECT_FALSE(FreeLibrary(reinterpret_cast<HMODULE>(&no_module)));
    EXPECT_EQ(GetProcAddress(GetModuleHandleW(TEXT("kernel32")), "Wow64EnableWow64FsRedirection"),
              nullptr);
}
