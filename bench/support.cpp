#include "support.h"

#include <time.h>

#include <cstdlib>

namespace bench {

const std::string& HostRoot() {
    static const std::string root = std::getenv("QV_HOST_ROOT");
    return root;
}

UnicodeString Wide(std::string_view ascii) {
    UnicodeString text;
    text.SetLength(static_cast<long long>(ascii.size()));
    for (std::size_t i = 0; i < ascii.size(); ++i) text.data()[i] = static_cast<WCHAR>(ascii[i]);
    return text;
}

std::string NewFileName() {
    static int number = 0;
    return HostRoot() + "/bench_" + std::to_string(++number);
}

std::int64_t Now() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

}  // namespace bench
