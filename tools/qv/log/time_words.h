// Points in time as a person types them.
#pragma once

#include <string>

#include "log/log_time.h"

namespace qv {

// For the help of options.
inline constexpr const char* kTimeWords =
    "2026-01-31, 2026-01-31T09:00:00 (local; UTC with Z), 10:00 (today), now, today, yesterday, "
    "@SECONDS (since 1970), or how long ago: 90s, 1d12h, 5 min ago";

// One of
//   - "2026-01-31", "2026-01-31T09:00", "2026-01-31 09:00:00.1234567": local unless "Z" or an
//   offset
//     such as "+01:00" follows;
//   - "10:00", "10:00:30": of the local day of `now`;
//   - "today", "yesterday": the local day's beginning, or with a time as in "yesterday 10:00";
//   - "now"; "@1769817600.5": seconds since 1970;
//   - how long before `now`: "90s", "1d12h", "2w", "5 min ago", "2 hours 30 minutes ago".
// Capitals count like small letters. A local time that the clocks show twice is the first of the
// two; one that they leave out is as much later as the clocks go forward. False for anything else.
bool ParseTime(const std::string& text, LogTime now, LogTime& time);

// The value of an option. Throws Failure (kWrongUsage) for what is no time.
LogTime TimeOption(const char* option, const std::string& text);

}  // namespace qv
