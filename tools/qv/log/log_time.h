// Points in time as a person writes and reads them.
#pragma once

#include <cstdint>
#include <string>

namespace qv {

// UTC, in 100 ns units since 1601, as the log file has it.
using LogTime = std::uint64_t;

LogTime Now();

// "2026-01-31T09:00:00.123", "2026-01-31T08:00:00.1234567Z". Empty for what is behind the year
// 9999.
std::string LocalText(LogTime time);
std::string UtcText(LogTime time);

// "2026-01-31", "2026-01-31T09:00", "2026-01-31 09:00:00.1234567", local unless "Z" or an offset
// such as "+01:00" follows; or how long before `now`: "90s", "10m", "2h", "1d12h", "2w". False for
// anything else.
bool ParseTime(const std::string& text, LogTime now, LogTime& time);

}  // namespace qv
