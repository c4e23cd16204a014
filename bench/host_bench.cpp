// The Linux host: reading the registry, loading and unloading the library.
#include <dlfcn.h>
#include <qv_host.h>
#include <sys/stat.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "full_log.h"
#include "mox_log/logger.h"
#include "mox_log/registry.h"
#include "support.h"
#include "tool_run.h"

namespace {

constexpr int kValues = 1000;

// A key of the registry with a thousand texts.
class Values {
  public:
    static const Values& Get() {
        static const Values values;
        return values;
    }
    HKEY Key() const { return key_; }
    const std::vector<UnicodeString>& Names() const { return names_; }
    const std::string& File() const { return file_; }

  private:
    // Imports a file, as an installer does. So this is one change, not a thousand.
    Values() : file_(bench::HostRoot() + "/registry/registry.db") {
        const std::string text = bench::HostRoot() + "/values.reg";
        std::FILE* const file = std::fopen(text.c_str(), "w");
        std::fputs("Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Bench]\n",
                   file);
        for (int i = 0; i < kValues; ++i) {
            std::fprintf(file, "\"Value %d\"=\"C:\\\\Users\\\\anna\\\\Documents\\\\%d\"\n", i, i);
            names_.push_back(bench::Wide("Value " + std::to_string(i)));
        }
        std::fclose(file);
        QvHostImport(bench::Wide(text).t_str(), nullptr, 0);
        key_ = Mox::RegOpenToRead(HKEY_CURRENT_USER, TEXT("Software\\Bench"));
    }

    std::string file_;
    HKEY key_ = nullptr;
    std::vector<UnicodeString> names_;
};

// An iteration is one value; they take turns.
template <class Read>
void ReadValues(benchmark::State& state, Read read) {
    const Values& values = Values::Get();
    std::size_t next = 0;
    for (auto _ : state) {
        if (!read(values, values.Names()[next])) state.SkipWithError("not read");
        next = next + 1 == kValues ? 0 : next + 1;
    }
}

void QueryValueOurs(benchmark::State& state) {
    ReadValues(state, [](const Values& values, const UnicodeString& name) {
        WCHAR text[64];
        DWORD size = sizeof text;
        DWORD type = 0;
        const LSTATUS code = RegQueryValueExW(values.Key(), name.t_str(), nullptr, &type,
                                              reinterpret_cast<BYTE*>(text), &size);
        return code == ERROR_SUCCESS && type == REG_SZ;
    });
}

void ReadStringOurs(benchmark::State& state) {
    ReadValues(state, [](const Values& values, const UnicodeString& name) {
        return Mox::RegReadString(values.Key(), name, UnicodeString()).Length() > 0;
    });
}

void StatFloor(benchmark::State& state) {
    ReadValues(state, [](const Values& values, const UnicodeString&) {
        struct stat info;
        return stat(values.File().c_str(), &info) == 0;
    });
}

BENCHMARK(QueryValueOurs)->Name("host/registry_query/ours");
BENCHMARK(StatFloor)->Name("host/registry_query/stat");
BENCHMARK(ReadStringOurs)->Name("host/registry_read/ours");
BENCHMARK(StatFloor)->Name("host/registry_read/stat");

std::string FolderOf(const void* address) {
    Dl_info info{};
    dladdr(address, &info);
    return std::filesystem::canonical(info.dli_fname).parent_path();
}

enum class Log { kNew, kFull };

// A fresh root, with a log where the product keeps it when nothing else is set up.
std::string NewRoot(Log log) {
    std::string root = bench::NewFileName();
    const std::string folder = root + "/drive_c/Temp";
    std::filesystem::create_directories(folder);
    if (log == Log::kFull) bench::WriteFullLog(folder + "/orlo.log");
    return root;
}

// Runs in a fresh process that has nothing loaded. Seconds of processor time; 0 for a failure.
double LoadSeconds(const std::string& library, const std::string& root) {
    const std::string command =
        "QV_HOST_ROOT=" + root + ' ' + bench::Folder() + "/load_timer " + library + " 200";
    std::FILE* const program = popen(command.c_str(), "r");
    long long nanoseconds = 0;
    if (program == nullptr || std::fscanf(program, "%lld", &nanoseconds) != 1) nanoseconds = 0;
    if (program != nullptr) pclose(program);
    return static_cast<double>(nanoseconds) / 1e9;
}

void Load(benchmark::State& state, const std::string& library, Log log) {
    for (auto _ : state) {
        const std::string root = NewRoot(log);
        const double seconds = LoadSeconds(library, root);
        if (seconds == 0) state.SkipWithError("not loaded");
        state.SetIterationTime(seconds);
        std::filesystem::remove_all(root);
    }
}

template <Log log>
void LoadOurs(benchmark::State& state) {
    Load(state, FolderOf(reinterpret_cast<const void*>(&Mox::GetLogger)) + "/libqv_rtl.so", log);
}

void LoadSmall(benchmark::State& state) {
    Load(state, bench::Folder() + "/qv_small_module.so", Log::kNew);
}

BENCHMARK(LoadOurs<Log::kNew>)->Name("host/load/ours")->UseManualTime()->Iterations(3);
BENCHMARK(LoadSmall)->Name("host/load/small_library")->UseManualTime()->Iterations(3);
BENCHMARK(LoadOurs<Log::kFull>)->Name("host/load_full/ours")->UseManualTime()->Iterations(3);
BENCHMARK(LoadSmall)->Name("host/load_full/small_library")->UseManualTime()->Iterations(3);

}  // namespace
