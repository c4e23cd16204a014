#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "console.h"

namespace qv {

bool IsTerminal(Stream stream) {
    return isatty(static_cast<int>(stream)) != 0;
}

bool OutputHasNoReader() {
    return errno == EPIPE;
}

std::vector<std::string> PrepareConsole(int argc, char** argv) {
    // A closed pipe is an error of the write, so that what the program has begun is ended properly.
    std::signal(SIGPIPE, SIG_IGN);
    return {argv, argv + argc};
}

}  // namespace qv
