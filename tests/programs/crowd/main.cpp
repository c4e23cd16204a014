// crowd VERB ARGUMENT...: see the table.
#include <cstdio>
#include <cstring>

#include "verbs.h"

namespace {

using namespace stress;

struct TVerb {
    const char* name;
    const char* usage;
    std::size_t least;
    std::size_t most;
    int (*run)(const TArguments&);
};

constexpr TVerb kVerbs[] = {
    {"write", "FILE LIMIT FIRST THREADS RECORDS GO", 6, 6, Write},
    {"texts", "FILE", 1, 1, Texts},
    {"exit", "[ORDER]", 0, 1, End},
#ifndef _WIN32
    {"check", "FILE WRITERS RECORDS", 3, 3, Check},
    {"kill-log",
     "FOLDER [--kills N] [--ring BYTES] [--writers N] [--sizes equal|random] [--held yes|no] "
     "[--seed N]",
     1, 13, KillLog},
    {"kill-registry", "KILLS", 1, 1, KillRegistry},
    {"hold", "FOLDER | start X | leave GO", 1, 2, Hold},
    {"forks", "FILE WRITERS RECORDS CHILDREN", 4, 4, Forks},
#endif
};

}  // namespace

int main(int argc, char** argv) {
    const TArguments arguments(argv + (argc < 2 ? argc : 2), argv + argc);
    for (const TVerb& verb : kVerbs) {
        if (argc < 2 || std::strcmp(argv[1], verb.name) != 0) continue;
        if (arguments.size() >= verb.least && arguments.size() <= verb.most)
            return verb.run(arguments);
        std::fprintf(stderr, "usage: crowd %s %s\n", verb.name, verb.usage);
        return 2;
    }
    for (const TVerb& verb : kVerbs) std::fprintf(stderr, "crowd %s %s\n", verb.name, verb.usage);
    return 2;
}
