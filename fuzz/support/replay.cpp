// Runs a target once on each of the given files: the program for compilers that have no libFuzzer.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "support/input.h"

namespace {

// The whole content. A file that cannot be read ends the run: a replay that skips it proves
// nothing.
std::vector<std::uint8_t> ContentOf(const char* name) {
    std::ifstream file(name, std::ios::binary);
    std::vector<std::uint8_t> content((std::istreambuf_iterator<char>(file)), {});
    if (file.is_open() && !file.bad()) return content;
    std::perror(name);
    std::exit(2);
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        std::fprintf(stderr, "no files given\n");
        return 2;
    }
    for (int i = 1; i < count; ++i) {
        // The last line tells which file a crash belongs to.
        std::fprintf(stderr, "%s\n", arguments[i]);
        std::vector<std::uint8_t> content = ContentOf(arguments[i]);
        content.shrink_to_fit();
        LLVMFuzzerTestOneInput(content.data(), content.size());
    }
    return 0;
}
