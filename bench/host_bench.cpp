// The Linux host: registry, load and unload.
#include <windows.h>

#include "support.h"

#include <sys/stat.h>

namespace {

void ReadValueOurs(benchmark::State& state) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, TEXT("Software\\Bench"), 0, nullptr, 0, KEY_ALL_ACCESS,
                    nullptr, &key, nullptr);
    const DWORD stored = 7;
    RegSetValueExW(key, TEXT("Value"), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&stored),
                   sizeof(stored));
    for (auto _ : state) {
        DWORD value = 0;
        DWORD size = sizeof(value);
        RegQueryValueExW(key, TEXT("Value"), nullptr, nullptr, reinterpret_cast<BYTE*>(&value),
                         &size);
        if (value != stored) state.SkipWithError("not read");
    }
    RegCloseKey(key);
}

void StatFloor(benchmark::State& state) {
    struct stat info {};
    for (auto _ : state) {
        if (stat(bench::HostRoot().c_str(), &info) != 0) state.SkipWithError("no host root");
    }
}

BENCHMARK(ReadValueOurs)->Name("host/registry_read/ours");
BENCHMARK(StatFloor)->Name("host/registry_read/stat");

}  // namespace
