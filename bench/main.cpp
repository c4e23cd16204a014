// The benchmark program. It makes a host root of its own and removes it at the end.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

class ThrowAwayRoot {
  public:
    ThrowAwayRoot() : folder_(std::filesystem::temp_directory_path() / "qv_bench_XXXXXX") {
        if (mkdtemp(folder_.data()) == nullptr) {
            std::perror("no temporary folder");
            std::exit(2);
        }
        setenv("QV_HOST_ROOT", folder_.c_str(), 1);
    }
    ~ThrowAwayRoot() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

  private:
    std::string folder_;
};

}  // namespace

int main(int argc, char** argv) {
    // The peers use the C library's heap. It must keep its pages between two rounds of a case, as
    // the process heap of the library does.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    const ThrowAwayRoot root;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::AddCustomContext("compiler", QV_COMPILER);
    benchmark::AddCustomContext("flags", QV_FLAGS);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
