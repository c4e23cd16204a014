#include "base/console.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "base/host.h"

namespace qv {

void Print(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        if (OutputHasNoReader()) throw ClosedPipe();
        throw Failure("cannot write to standard output: " + std::generic_category().message(errno));
    }
}

void PrintLine(const std::string& text) {
    Print(text + "\n");
}

void PrintError(const std::string& text) {
    std::fputs(("qv: " + Lines(FromUtf8(text)) + "\n").c_str(), stderr);
}

std::string Counted(std::uint64_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace qv
