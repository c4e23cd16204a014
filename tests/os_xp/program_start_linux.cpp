// Starts with and without elevation, with a script in the program's place. On Windows a start that
// fails shows a message box.
#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "os_xp/program_start.h"
#include "support/captured_log.h"
#include "support/fresh_host_root.h"
#include "support/other_user_linux.h"

namespace {

class ProgramStart : public testing::Test {
  protected:
    ProgramStart() {
        const std::string folder = root_.Folder() + "/drive_c/tools";
        std::filesystem::create_directories(folder);
        std::ofstream(folder + "/show") << "#!/bin/sh\n(pwd -P; printf '%s\\n' \"$@\") >out.new\n"
                                        << "mv out.new out\n";
        std::filesystem::permissions(folder + "/show", std::filesystem::perms::owner_all);
        out_ = std::filesystem::canonical(folder) / "out";
    }
    // Waits for the script and returns the text that it wrote; "" after a time-out.
    std::string Output() const {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!std::filesystem::exists(out_) && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        std::ostringstream text;
        text << std::ifstream(out_).rdbuf();
        return text.str();
    }

    test::FreshHostRoot root_;
    std::filesystem::path out_;
};

}  // namespace

TEST_F(ProgramStart, RunsInTheProgramsFolder) {
    EXPECT_TRUE(RunAs(TEXT("C:\\tools\\show"), TEXT("\"a b\" c"), geteuid() == 0));
    EXPECT_EQ(Output(), out_.parent_path().string() + "\na b\nc\n");
}

TEST_F(ProgramStart, AFailureShowsInTheLogOnly) {
    test::CapturedLog log;
    EXPECT_TRUE(RunAs(TEXT("C:\\tools\\none"), TEXT("-x"), false));
    ASSERT_EQ(log.Entries().size(), 1u);
    EXPECT_TRUE(log.Has('X', TEXT("ShellExecuteEx('C:\\tools\\none', '-x') failed: [2]")));
}

TEST_F(ProgramStart, NobodyIsElevatedWithoutTheRights) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can act for other users";
    EXPECT_TRUE(test::HoldsForUser(65534, 65534, [] {
        test::CapturedLog log;
        return RunAs(TEXT("C:\\tools\\show"), UnicodeString(), true) &&
               log.Has('X', TEXT("ShellExecuteEx('C:\\tools\\show', '') failed: [5]"));
    }));
}
