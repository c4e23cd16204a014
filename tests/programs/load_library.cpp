// load_library FILE COUNT [THREADS]: loads and unloads a module COUNT times, in each of THREADS
// threads when there are some. Linked to the host's calls only, so that nothing else keeps the
// module loaded. Where the system counts a process's handles, it says how many there are after a
// fifth of the loads and at the end.
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

using Name = std::basic_string<WCHAR>;

std::atomic<int> failures{0};

void Cycle(const Name& name, int count, bool alone) {
    for (int i = 0; i < count; ++i) {
        const HMODULE module = LoadLibraryW(name.c_str());
        const bool done = module != nullptr && FreeLibrary(module);
        if (!done || (alone && GetModuleHandleW(name.c_str()) != nullptr)) ++failures;
    }
}

void CycleInThreads(const Name& name, int count, int threads) {
    std::vector<std::thread> running;
    for (int t = 0; t < threads; ++t) running.emplace_back(Cycle, std::cref(name), count, false);
    for (std::thread& thread : running) thread.join();
}

void ShowHandles(const char* when) {
    using TCount = BOOL(WINAPI*)(HANDLE, LPDWORD);
    const auto count = reinterpret_cast<TCount>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(TEXT("kernel32.dll")), "GetProcessHandleCount")));
    DWORD handles = 0;
    if (count == nullptr || !count(GetCurrentProcess(), &handles)) return;
    std::printf("%s: %lu handles\n", when, static_cast<unsigned long>(handles));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        std::fputs("usage: load_library FILE COUNT [THREADS]\n", stderr);
        return 2;
    }
    const std::string file = argv[1];
    const Name name(file.begin(), file.end());
    const int count = std::atoi(argv[2]);
    if (argc == 3) {
        Cycle(name, count, true);
    } else {
        CycleInThreads(name, count / 5, std::atoi(argv[3]));
        ShowHandles("after a fifth");
        CycleInThreads(name, count - count / 5, std::atoi(argv[3]));
        ShowHandles("at the end");
    }
    if (GetModuleHandleW(name.c_str()) != nullptr) ++failures;
    return failures == 0 ? 0 : 1;
}
