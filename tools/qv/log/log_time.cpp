#include "log/log_time.h"

#include <windows.h>

#include <chrono>
#include <cstring>
#include <string_view>

#include "base/host.h"

namespace qv {

namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;  // seconds
constexpr std::int64_t kLastSecond = 253'402'300'799;     // of the year 9999, since 1970
constexpr std::int64_t kMinute = 60, kHour = 60 * kMinute, kDay = 24 * kHour;

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

std::int64_t UnixSeconds(LogTime time) {
    return static_cast<std::int64_t>(time / kTicksPerSecond) - kFrom1601To1970;
}

// Takes a text apart from its front.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : left_(text) {}

    bool AtEnd() const { return left_.empty(); }
    bool Take(char c) {
        if (left_.empty() || left_[0] != c) return false;
        left_.remove_prefix(1);
        return true;
    }
    // A number of at least one and at most `most` digits; how many it had.
    std::size_t TakeNumber(std::size_t most, std::int64_t& number) {
        std::size_t digits = 0;
        for (number = 0; digits < most && digits < left_.size(); ++digits) {
            const char c = left_[digits];
            if (c < '0' || c > '9') break;
            number = number * 10 + (c - '0');
        }
        left_.remove_prefix(digits);
        return digits;
    }
    // Exactly `digits` digits that give at most `largest`.
    bool TakeField(std::size_t digits, std::int64_t largest, std::int64_t& number) {
        return TakeNumber(digits, number) == digits && number <= largest;
    }
    char TakeAny() {
        if (left_.empty()) return '\0';
        const char c = left_[0];
        left_.remove_prefix(1);
        return c;
    }

  private:
    std::string_view left_;
};

bool TakeDate(Scanner& in, std::int64_t& seconds) {
    std::int64_t year = 0, month = 0, day = 0;
    if (!in.TakeField(4, 9999, year) || !in.Take('-') || !in.TakeField(2, 12, month) ||
        !in.Take('-') || !in.TakeField(2, 31, day)) {
        return false;
    }
    const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    seconds = std::chrono::sys_days(date).time_since_epoch().count() * kDay;
    return date.ok() && year >= 1601;
}

// ".1234567": a fraction of a second; what is finer is cut off.
bool TakeFraction(Scanner& in, std::int64_t& ticks) {
    ticks = 0;
    if (!in.Take('.') && !in.Take(',')) return true;
    std::int64_t unused = 0;
    std::size_t digits = in.TakeNumber(7, ticks);
    if (digits == 0) return false;
    for (; digits < 7; ++digits) ticks *= 10;
    in.TakeNumber(SIZE_MAX, unused);
    return true;
}

// "09:00", "09:00:00.5"
bool TakeClock(Scanner& in, std::int64_t& seconds, std::int64_t& ticks) {
    std::int64_t hour = 0, minute = 0, second = 0;
    if (!in.TakeField(2, 23, hour) || !in.Take(':') || !in.TakeField(2, 59, minute)) return false;
    if (in.Take(':') && (!in.TakeField(2, 59, second) || !TakeFraction(in, ticks))) return false;
    seconds += hour * kHour + minute * kMinute + second;
    return true;
}

// Subtracts the offset of the zone at the end of the text, or that of the local zone.
bool TakeZone(Scanner& in, std::int64_t& seconds) {
    if (in.Take('Z') || in.Take('z')) return in.AtEnd();
    if (in.AtEnd()) {
        const std::int64_t guess = seconds - LocalOffset(seconds);
        seconds -= LocalOffset(guess);
        return true;
    }
    const bool east = in.Take('+');
    std::int64_t hours = 0, minutes = 0;
    if ((!east && !in.Take('-')) || !in.TakeField(2, 23, hours)) return false;
    in.Take(':');
    if (!in.TakeField(2, 59, minutes)) return false;
    seconds -= (east ? 1 : -1) * (hours * kHour + minutes * kMinute);
    return in.AtEnd();
}

bool ParseMoment(const std::string& text, LogTime& time) {
    Scanner in(text);
    std::int64_t seconds = 0, ticks = 0;
    if (!TakeDate(in, seconds)) return false;
    if ((in.Take('T') || in.Take('t') || in.Take(' ')) && !TakeClock(in, seconds, ticks)) {
        return false;
    }
    if (!TakeZone(in, seconds) || seconds < -kFrom1601To1970) return false;
    time = static_cast<LogTime>((seconds + kFrom1601To1970) * kTicksPerSecond + ticks);
    return true;
}

std::int64_t UnitSeconds(char unit) {
    switch (unit) {
        case 's':
            return 1;
        case 'm':
            return kMinute;
        case 'h':
            return kHour;
        case 'd':
            return kDay;
        case 'w':
            return 7 * kDay;
        default:
            return 0;
    }
}

bool ParseAgo(const std::string& text, LogTime now, LogTime& time) {
    constexpr std::size_t kMostDigits = 9;
    Scanner in(text);
    std::uint64_t ago = 0;
    do {
        std::int64_t number = 0;
        if (in.TakeNumber(kMostDigits, number) == 0) return false;
        const std::int64_t unit = UnitSeconds(in.TakeAny());
        if (unit == 0) return false;
        ago += static_cast<std::uint64_t>(number * unit);
    } while (!in.AtEnd());
    const std::uint64_t most = now / kTicksPerSecond;
    time = ago < most ? now - ago * kTicksPerSecond : 0;
    return true;
}

}  // namespace

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

bool ParseTime(const std::string& text, LogTime now, LogTime& time) {
    return ParseMoment(text, time) || ParseAgo(text, now, time);
}

}  // namespace qv
