// Writing to a pipe whose reader has gone.
#include <windows.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

namespace {

// In a process of its own, whose standard output is such a pipe.
[[noreturn]] void WriteToNobody() {
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) std::_Exit(2);
    close(ends[0]);
    close(ends[1]);
    DWORD done = 7;
    const BOOL wrote = WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), "1234", 4, &done, nullptr);
    const bool told = !wrote && GetLastError() == ERROR_WRITE_FAULT && done == 0;
    std::_Exit(told ? 0 : 1);
}

TEST(BrokenPipeDeathTest, FailsTheWriteAndNotTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(WriteToNobody(), testing::ExitedWithCode(0), "");
}

}  // namespace
