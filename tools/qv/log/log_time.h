// Points in time, and how they are shown.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qv {

// UTC, in 100 ns units since 1601, as the log file has it.
using LogTime = std::uint64_t;

inline constexpr std::int64_t kTicksPerSecond = 10'000'000;
inline constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;  // seconds
inline constexpr std::int64_t kLastSecond = 253'402'300'799;     // of the year 9999, since 1970

LogTime Now();
// Seconds since 1970.
std::int64_t UnixSeconds(LogTime time);

// "2026-01-31T09:00:00.123", or in UTC "2026-01-31T08:00:00.1234567Z", of one time after the other:
// those of one second share most of it. Empty for what is behind the year 9999.
class TimeText {
  public:
    explicit TimeText(bool utc) : utc_(utc) {}
    // Until the next call.
    std::string_view Of(LogTime time);

  private:
    static constexpr std::size_t kSize = 28, kLocalSize = 23;

    bool utc_;
    std::optional<std::int64_t> second_;  // whose text stands there, since 1970
    char text_[kSize + 1] = "0000-00-00T00:00:00.0000000Z";
};

// One of them.
std::string LocalText(LogTime time);
std::string UtcText(LogTime time);

}  // namespace qv
