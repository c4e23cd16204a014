// Writing to a pipe whose reader has gone.
#include <windows.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum Outcome { kTold = 0, kNotTold = 1, kNoPipe = 2 };

// In a process of its own, whose standard output is such a pipe.
Outcome WriteToNobody() {
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) return kNoPipe;
    close(ends[0]);
    close(ends[1]);
    DWORD done = 7;
    const BOOL wrote = WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), "1234", 4, &done, nullptr);
    return !wrote && GetLastError() == ERROR_WRITE_FAULT && done == 0 ? kTold : kNotTold;
}

TEST(BrokenPipeTest, FailsTheWriteAndNotTheProcess) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(WriteToNobody());
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), kTold);
}

}  // namespace
