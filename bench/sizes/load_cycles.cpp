// load_cycles FILE COUNT THREADS [HOST]: loads the library FILE, lets it log a record and unloads
// it. Does this COUNT times in each of THREADS threads. Fails when the process has grown. Without
// HOST the system's loader is called: the host layer is loaded and unloaded with the library. HOST
// is the file of the host layer. It stays loaded, and its LoadLibraryW and FreeLibrary are called.
// Prints what the process holds before and after. The records are "[GetGlobalDevMode('T-N')] ...".
#include <dlfcn.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using TDoCommand = int (*)(const char16_t*, char16_t*, int);
using TLoadLibrary = void* (*)(const char16_t*);
using TFreeLibrary = int (*)(void*);
using TGetProcAddress = void* (*)(void*, const char*);

[[noreturn]] void Fail(const std::string& text) {
    std::fprintf(stderr, "%s\n", text.c_str());
    std::_Exit(1);
}

std::u16string Wide(const std::string& text) {
    return {text.begin(), text.end()};
}

template <class Function>
Function Find(void* module, const char* name) {
    void* found = dlsym(module, name);
    if (found == nullptr) Fail(std::string(name) + " is missing");
    return reinterpret_cast<Function>(found);
}

// One way to load and unload.
class TLoader {
  public:
    TLoader(std::string file, const char* host) : file_(std::move(file)) {
        if (host == nullptr) return;
        host_ = dlopen(host, RTLD_NOW | RTLD_GLOBAL);
        if (host_ == nullptr) Fail(dlerror());
        load_ = Find<TLoadLibrary>(host_, "LoadLibraryW");
        free_ = Find<TFreeLibrary>(host_, "FreeLibrary");
        address_ = Find<TGetProcAddress>(host_, "GetProcAddress");
    }
    void* Load() const {
        void* module =
            host_ == nullptr ? dlopen(file_.c_str(), RTLD_NOW) : load_(Wide(file_).c_str());
        if (module == nullptr) Fail("the library does not load");
        return module;
    }
    TDoCommand Command(void* module) const {
        void* found =
            host_ == nullptr ? dlsym(module, "DoCommandW") : address_(module, "DoCommandW");
        if (found == nullptr) Fail("DoCommandW is missing");
        return reinterpret_cast<TDoCommand>(found);
    }
    void Unload(void* module) const {
        const bool done = host_ == nullptr ? dlclose(module) == 0 : free_(module) != 0;
        if (!done) Fail("the library does not unload");
    }

  private:
    std::string file_;
    void* host_ = nullptr;
    TLoadLibrary load_ = nullptr;
    TFreeLibrary free_ = nullptr;
    TGetProcAddress address_ = nullptr;
};

void Cycle(const TLoader& loader, int thread, int first, int end) {
    for (int i = first; i < end; ++i) {
        void* module = loader.Load();
        const std::string name = std::to_string(thread) + "-" + std::to_string(i);
        char16_t result[200];
        loader.Command(module)(Wide("getdevmode\tprintername\t" + name).c_str(), result, 199);
        loader.Unload(module);
        // A pause without the library, so that now and then no thread has it loaded.
        std::this_thread::sleep_for(std::chrono::microseconds(500 * ((thread + i) % 8)));
    }
}

void CycleInThreads(const TLoader& loader, int threads, int first, int end) {
    std::vector<std::thread> running;
    for (int t = 0; t < threads; ++t) running.emplace_back(Cycle, std::ref(loader), t, first, end);
    for (std::thread& thread : running) thread.join();
}

struct THeld {
    std::size_t heap;      // bytes
    std::size_t resident;  // bytes
    int descriptors;
    int mappings;
};

THeld Held() {
    THeld held{};
    held.heap = mallinfo2().uordblks;
    std::size_t total = 0;
    std::ifstream("/proc/self/statm") >> total >> held.resident;
    held.resident *= 4096;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        held.descriptors += entry.exists() ? 1 : 0;
    }
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) ++held.mappings;
    return held;
}

void Show(const char* when, const THeld& held) {
    std::printf("%s: heap %zu KiB, resident %zu KiB, descriptors %d, mappings %d\n", when,
                held.heap >> 10, held.resident >> 10, held.descriptors, held.mappings);
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc == 4 || argc == 5 ? std::atoi(argv[2]) : 0;
    if (count < 10) {
        std::fputs("usage: load_cycles FILE COUNT THREADS [HOST]\n", stderr);
        return 2;
    }
    const int threads = std::atoi(argv[3]);
    const TLoader loader(argv[1], argc == 5 ? argv[4] : nullptr);
    CycleInThreads(loader, threads, 0, count / 5);
    const THeld before = Held();
    CycleInThreads(loader, threads, count / 5, count);
    const THeld after = Held();
    Show("after a fifth", before);
    Show("at the end", after);
    const bool flat =
        after.descriptors <= before.descriptors && after.mappings <= before.mappings + threads &&
        after.heap <= before.heap + (64U << 10) && after.resident <= before.resident + (4U << 20);
    if (!flat) Fail("the process grows");
    return 0;
}
