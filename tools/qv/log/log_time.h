// Points in time as a person writes and reads them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qv {

// UTC, in 100 ns units since 1601, as the log file has it.
using LogTime = std::uint64_t;

LogTime Now();

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

// "2026-01-31", "2026-01-31T09:00", "2026-01-31 09:00:00.1234567", local unless "Z" or an offset
// such as "+01:00" follows; or how long before `now`: "90s", "10m", "2h", "1d12h", "2w". False for
// anything else.
bool ParseTime(const std::string& text, LogTime now, LogTime& time);

}  // namespace qv
