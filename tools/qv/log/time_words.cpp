#include "log/time_words.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <string_view>

#include "base/console.h"
#include "base/host.h"
#include "base/suggestion.h"

namespace qv {

namespace {

constexpr std::int64_t kMinute = 60, kHour = 60 * kMinute, kDay = 24 * kHour;

struct UnitRow {
    std::string_view name;
    std::int64_t seconds;
};
constexpr UnitRow kUnits[] = {
    {"s", 1},         {"sec", 1},          {"second", 1},   {"m", kMinute},
    {"min", kMinute}, {"minute", kMinute}, {"h", kHour},    {"hour", kHour},
    {"d", kDay},      {"day", kDay},       {"w", 7 * kDay}, {"week", 7 * kDay},
};

// Takes a text apart from its front.
class Scanner {
  public:
    explicit Scanner(std::string_view text) : left_(text) {}

    bool AtEnd() const { return left_.empty(); }
    bool Take(std::string_view text) {
        if (!left_.starts_with(text)) return false;
        left_.remove_prefix(text.size());
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
    // All small letters at the front.
    std::string_view TakeWord() {
        const auto* const end = std::find_if_not(left_.begin(), left_.end(),
                                                 [](char c) { return c >= 'a' && c <= 'z'; });
        const std::string_view word(left_.begin(), end);
        left_.remove_prefix(word.size());
        return word;
    }
    void SkipBlanks() { left_.remove_prefix(std::min(left_.find_first_not_of(' '), left_.size())); }

  private:
    std::string_view left_;
};

// The moment when the clocks show `local`, both in seconds since 1970. Offsets change at most once
// in two days.
std::int64_t FromLocal(std::int64_t local) {
    const std::int64_t before = local - LocalOffset(local - kDay);
    if (before + LocalOffset(before) == local) return before;
    const std::int64_t after = local - LocalOffset(local + kDay);
    return after + LocalOffset(after) == local ? after : before;
}

std::int64_t BeginOfDay(LogTime now) {
    const std::int64_t seconds = UnixSeconds(now);
    const std::chrono::seconds local(seconds + LocalOffset(seconds));
    return std::chrono::floor<std::chrono::days>(local).count() * kDay;
}

bool TakeDate(Scanner& in, std::int64_t& seconds) {
    std::int64_t year = 0, month = 0, day = 0;
    if (!in.TakeField(4, 9999, year) || !in.Take("-") || !in.TakeField(2, 12, month) ||
        !in.Take("-") || !in.TakeField(2, 31, day)) {
        return false;
    }
    const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    seconds = std::chrono::sys_days(date).time_since_epoch().count() * kDay;
    return date.ok() && year >= 1601;
}

// A date, or a word for a day. Takes nothing when there is none.
bool TakeDay(Scanner& in, std::int64_t today, std::int64_t& day) {
    day = today;
    if (in.Take("today")) return true;
    if (in.Take("yesterday")) {
        day -= kDay;
        return true;
    }
    Scanner rest = in;
    std::int64_t date = 0;
    if (!TakeDate(rest, date)) return false;
    in = rest;
    day = date;
    return true;
}

// ".1234567": a fraction of a second; what is finer is cut off.
bool TakeFraction(Scanner& in, std::int64_t& ticks) {
    ticks = 0;
    if (!in.Take(".") && !in.Take(",")) return true;
    std::int64_t unused = 0;
    std::size_t digits = in.TakeNumber(7, ticks);
    if (digits == 0) return false;
    for (; digits < 7; ++digits) ticks *= 10;
    while (in.TakeNumber(7, unused) > 0) {
    }
    return true;
}

// "09:00", "09:00:00.5"
bool TakeClock(Scanner& in, std::int64_t& seconds, std::int64_t& ticks) {
    std::int64_t hour = 0, minute = 0, second = 0;
    if (in.TakeNumber(2, hour) == 0 || hour > 23 || !in.Take(":") || !in.TakeField(2, 59, minute))
        return false;
    if (in.Take(":") && (!in.TakeField(2, 59, second) || !TakeFraction(in, ticks))) return false;
    seconds += hour * kHour + minute * kMinute + second;
    return true;
}

// Subtracts the offset of the zone at the end of the text, or that of the local zone.
bool TakeZone(Scanner& in, std::int64_t& seconds) {
    if (in.Take("z")) return in.AtEnd();
    if (in.AtEnd()) {
        seconds = FromLocal(seconds);
        return true;
    }
    const bool east = in.Take("+");
    std::int64_t hours = 0, minutes = 0;
    if ((!east && !in.Take("-")) || !in.TakeField(2, 23, hours)) return false;
    in.Take(":");
    if (!in.TakeField(2, 59, minutes)) return false;
    seconds -= (east ? 1 : -1) * (hours * kHour + minutes * kMinute);
    return in.AtEnd();
}

LogTime TimeAt(std::int64_t seconds, std::int64_t ticks) {
    return static_cast<LogTime>((seconds + kFrom1601To1970) * kTicksPerSecond + ticks);
}

// A day, a time of the clock, or both.
bool ParseMoment(std::string_view text, LogTime now, LogTime& time) {
    Scanner in(text);
    std::int64_t seconds = 0, ticks = 0;
    const bool has_day = TakeDay(in, BeginOfDay(now), seconds);
    const bool has_clock = !has_day || in.Take("t") || in.Take(" ");
    if (has_clock && !TakeClock(in, seconds, ticks)) return false;
    if (!TakeZone(in, seconds) || seconds < -kFrom1601To1970) return false;
    time = TimeAt(seconds, ticks);
    return true;
}

bool ParseEpoch(std::string_view text, LogTime& time) {
    constexpr std::size_t kMostDigits = 12;
    Scanner in(text);
    std::int64_t seconds = 0, ticks = 0;
    if (!in.Take("@") || in.TakeNumber(kMostDigits, seconds) == 0 || seconds > kLastSecond ||
        !TakeFraction(in, ticks) || !in.AtEnd()) {
        return false;
    }
    time = TimeAt(seconds, ticks);
    return true;
}

// 0 for a word that is no unit.
std::int64_t UnitSeconds(std::string_view word) {
    constexpr std::size_t kShortestPlural = 4;
    if (word.size() >= kShortestPlural && word.ends_with('s')) word.remove_suffix(1);
    const auto* const row = std::ranges::find(kUnits, word, &UnitRow::name);
    return row == std::end(kUnits) ? 0 : row->seconds;
}

bool ParseAgo(std::string_view text, LogTime now, LogTime& time) {
    constexpr std::size_t kMostDigits = 9;
    Scanner in(text);
    std::uint64_t ago = 0;
    do {
        std::int64_t number = 0;
        if (in.TakeNumber(kMostDigits, number) == 0) return false;
        in.SkipBlanks();
        const std::int64_t unit = UnitSeconds(in.TakeWord());
        if (unit == 0) return false;
        ago += static_cast<std::uint64_t>(number * unit);
        in.SkipBlanks();
    } while (!in.AtEnd() && !in.Take("ago"));
    const std::uint64_t most = now / kTicksPerSecond;
    time = ago < most ? now - ago * kTicksPerSecond : 0;
    return in.AtEnd();
}

}  // namespace

bool ParseTime(const std::string& text, LogTime now, LogTime& time) {
    std::string small = text;
    for (char& c : small)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (small == "now") {
        time = now;
        return true;
    }
    return ParseMoment(small, now, time) || ParseEpoch(small, time) || ParseAgo(small, now, time);
}

LogTime TimeOption(const char* option, const std::string& text) {
    LogTime time = 0;
    if (ParseTime(text, Now(), time)) return time;
    const std::string suggestion = Suggestion(text, {"now", "today", "yesterday"});
    throw Failure(
        std::string(option) + ": '" + OneLine(FromUtf8(text)) + "' is no time" +
            (suggestion.empty() ? " such as 2026-01-31T09:00, 10:00, yesterday or 5 min ago"
                                : suggestion),
        ExitCode::kWrongUsage);
}

}  // namespace qv
