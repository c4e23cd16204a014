#include "log/log_time.h"

#include <windows.h>

#include <chrono>
#include <cstring>
#include <string_view>

#include "base/host.h"

namespace qv {

namespace {

// Writes the last `width` digits in front of `end`; returns where they begin.
char* PutDigits(char* end, std::int64_t number, int width) {
    for (; width > 0; --width, number /= 10) *--end = static_cast<char>('0' + number % 10);
    return end;
}

// "2026-01-31T09:00:00" at `text`; `seconds` since 1970 in whatever zone.
void PutDate(char* text, std::int64_t seconds) {
    const std::chrono::sys_seconds point{std::chrono::seconds(seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(point);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(point - day);
    PutDigits(text + 4, int{date.year()}, 4);
    PutDigits(text + 7, unsigned{date.month()}, 2);
    PutDigits(text + 10, unsigned{date.day()}, 2);
    PutDigits(text + 13, clock.hours().count(), 2);
    PutDigits(text + 16, clock.minutes().count(), 2);
    PutDigits(text + 19, clock.seconds().count(), 2);
}

bool IsShown(LogTime time) {
    return time / kTicksPerSecond <= std::uint64_t{kFrom1601To1970 + kLastSecond};
}

}  // namespace

std::int64_t UnixSeconds(LogTime time) {
    return static_cast<std::int64_t>(time / kTicksPerSecond) - kFrom1601To1970;
}

LogTime Now() {
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return LogTime{now.dwHighDateTime} << 32 | now.dwLowDateTime;
}

std::string_view TimeText::Of(LogTime time) {
    if (!IsShown(time)) return std::string_view();
    const std::int64_t seconds = UnixSeconds(time);
    if (second_ != seconds) {
        const std::int64_t shown = utc_ ? seconds : seconds + LocalOffset(seconds);
        if (shown > kLastSecond) return std::string_view();
        PutDate(text_, shown);
        second_ = seconds;
    }
    PutDigits(text_ + kSize - 1, static_cast<std::int64_t>(time % kTicksPerSecond), 7);
    return {text_, utc_ ? kSize : kLocalSize};
}

std::string LocalText(LogTime time) {
    return std::string(TimeText(false).Of(time));
}

std::string UtcText(LogTime time) {
    return std::string(TimeText(true).Of(time));
}

}  // namespace qv
