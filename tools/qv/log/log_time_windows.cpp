#include <windows.h>

#include "log_time.h"

namespace qv {

namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;  // seconds

FILETIME ToFileTime(std::int64_t seconds) {
    const auto ticks = static_cast<std::uint64_t>((seconds + kFrom1601To1970) * kTicksPerSecond);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::int64_t ToSeconds(const FILETIME& time) {
    const auto ticks = std::int64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    return ticks / kTicksPerSecond - kFrom1601To1970;
}

}  // namespace

// With the rules of the moment itself, not those of today.
std::int64_t LocalOffset(std::int64_t utc) {
    const FILETIME moment = ToFileTime(utc);
    SYSTEMTIME universal, local;
    FILETIME local_moment;
    if (!FileTimeToSystemTime(&moment, &universal) ||
        !SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) ||
        !SystemTimeToFileTime(&local, &local_moment)) {
        return 0;
    }
    return ToSeconds(local_moment) - utc;
}

}  // namespace qv
