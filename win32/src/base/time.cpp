// Time: 100 ns units since 1601-01-01 UTC, the performance counter, waiting.
#include <windows.h>

#include <sched.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>

namespace {

constexpr LONGLONG kUnitsPerSecond = 10'000'000;
constexpr LONGLONG kUnitsPerDay = 86'400 * kUnitsPerSecond;
constexpr LONGLONG kSecondsFrom1601To1970 = 11'644'473'600;

LONGLONG UnitsOf(const timespec& time) {
    return time.tv_sec * kUnitsPerSecond + time.tv_nsec / 100;
}

LONGLONG Clock(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return UnitsOf(now);
}

ULONGLONG Joined(const FILETIME& time) {
    return static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

FILETIME Split(LONGLONG units) {
    return {static_cast<DWORD>(units & 0xFFFFFFFF), static_cast<DWORD>(units >> 32)};
}

}  // namespace

void GetSystemTimeAsFileTime(FILETIME* time) {
    *time = Split(Clock(CLOCK_REALTIME) + kSecondsFrom1601To1970 * kUnitsPerSecond);
}

BOOL QueryPerformanceCounter(LARGE_INTEGER* count) {
    count->QuadPart = Clock(CLOCK_MONOTONIC);
    return TRUE;
}

DWORD GetTickCount() {
    return static_cast<DWORD>(Clock(CLOCK_BOOTTIME) / (kUnitsPerSecond / 1000));
}

BOOL FileTimeToLocalFileTime(const FILETIME* utc, FILETIME* local) {
    // Windows uses the offset that holds now, not the one that held at the converted time.
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    const LONGLONG units = static_cast<LONGLONG>(Joined(*utc)) + parts.tm_gmtoff * kUnitsPerSecond;
    if (Joined(*utc) >> 63 != 0 || units < 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *local = Split(units);
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* parts) {
    if (Joined(*time) >> 63 != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const auto units = static_cast<LONGLONG>(Joined(*time));
    const std::chrono::sys_days day = std::chrono::sys_days(std::chrono::year(1601) / 1 / 1) +
                                      std::chrono::days(static_cast<int>(units / kUnitsPerDay));
    const std::chrono::year_month_day date(day);
    const LONGLONG milliseconds = units % kUnitsPerDay / (kUnitsPerSecond / 1000);
    parts->wYear = static_cast<WORD>(static_cast<int>(date.year()));
    parts->wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
    parts->wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
    parts->wDayOfWeek = static_cast<WORD>(std::chrono::weekday(day).c_encoding());
    parts->wHour = static_cast<WORD>(milliseconds / 3'600'000);
    parts->wMinute = static_cast<WORD>(milliseconds / 60'000 % 60);
    parts->wSecond = static_cast<WORD>(milliseconds / 1000 % 60);
    parts->wMilliseconds = static_cast<WORD>(milliseconds % 1000);
    return TRUE;
}

void Sleep(DWORD milliseconds) {
    if (milliseconds == INFINITE) {
        for (;;) pause();
    }
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    timespec rest{milliseconds / 1000, milliseconds % 1000 * 1'000'000L};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}
