#include "process/program_start.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/unique_fd.h"

extern char** environ;

namespace host {

namespace {

// Runs in a copy of a process that may have threads, so it makes only calls that are safe there.
[[noreturn]] void BecomeProgram(char* const* arguments, const char* folder, int report) {
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    syscall(SYS_close_range, 3u, ~0u, static_cast<unsigned int>(CLOSE_RANGE_CLOEXEC));
    if (*folder == 0 || chdir(folder) == 0) execve(arguments[0], arguments, environ);
    const int error = errno;
    [[maybe_unused]] const ssize_t told = write(report, &error, sizeof error);
    _exit(127);
}

}  // namespace

int StartProgram(const std::vector<std::string>& arguments, const std::string& folder) {
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return errno;
    const UniqueFd report(ends[0]);
    UniqueFd child_end(ends[1]);
    // _Fork runs no handlers of fork: nothing of the host is used before the program starts.
    // The process in the middle ends at once. The program then belongs to the system's first
    // process, and nobody has to wait for it.
    const pid_t middle = _Fork();
    if (middle < 0) return errno;
    if (middle == 0) {
        const pid_t program = _Fork();
        if (program == 0) BecomeProgram(pointers.data(), folder.c_str(), child_end.get());
        const int error = errno;
        if (program < 0) {
            [[maybe_unused]] const ssize_t told = write(child_end.get(), &error, sizeof error);
        }
        _exit(0);
    }
    child_end = UniqueFd();
    while (waitpid(middle, nullptr, 0) < 0 && errno == EINTR) {
    }
    int error = 0;
    ssize_t count;
    do {
        count = read(report.get(), &error, sizeof error);
    } while (count < 0 && errno == EINTR);
    return count == sizeof error ? error : 0;
}

}  // namespace host
