#include "process/ask_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "base/unique_fd.h"

namespace host {
namespace {

constexpr std::size_t kMaxLine = 65536;

// The streams of the child: its input is empty, its output goes into the pipe, its errors go where
// ours go.
class Streams {
  public:
    explicit Streams(int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
    }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;
    ~Streams() { posix_spawn_file_actions_destroy(&actions_); }
    const posix_spawn_file_actions_t* Actions() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_;
};

// The first part of what comes through the pipe. The rest is read and dropped, so that the program
// can finish.
std::string ReadAll(int pipe) {
    std::string text;
    char buffer[4096];
    for (;;) {
        const ssize_t count = read(pipe, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return text;
        const std::size_t room = kMaxLine + 1 - text.size();
        text.append(buffer, std::min(static_cast<std::size_t>(count), room));
    }
}

bool EndedWell(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return false;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

ProgramAnswer AskProgram(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return {};
    const UniqueFd output(ends[0]);
    UniqueFd input(ends[1]);
    const Streams streams(input.get());
    pid_t child = 0;
    if (posix_spawnp(&child, program.c_str(), streams.Actions(), nullptr, argv.data(), environ)) {
        return {};
    }
    input = UniqueFd();
    ProgramAnswer answer;
    answer.line = ReadAll(output.get());
    answer.line.resize(std::min(answer.line.find('\n'), answer.line.size()));
    answer.accepted = EndedWell(child) && answer.line.size() <= kMaxLine;
    return answer;
}

}  // namespace host
