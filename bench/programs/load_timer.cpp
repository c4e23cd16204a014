// load_timer FILE COUNT: loads and unloads a shared library COUNT times, and prints the processor
// time of one time in nanoseconds. The first time does not count: it also loads libraries that FILE
// needs and that then stay.
#include <dlfcn.h>
#include <time.h>

#include <cstdio>
#include <cstdlib>

namespace {

bool LoadAndUnload(const char* file) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    return library != nullptr && dlclose(library) == 0;
}

long long Nanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc == 3 ? std::atoi(argv[2]) : 0;
    if (count < 1) {
        std::fputs("usage: load_timer FILE COUNT\n", stderr);
        return 2;
    }
    if (!LoadAndUnload(argv[1])) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    const long long began = Nanoseconds();
    for (int i = 0; i < count; ++i) {
        if (!LoadAndUnload(argv[1])) return 1;
    }
    std::printf("%lld\n", (Nanoseconds() - began) / count);
    return 0;
}
