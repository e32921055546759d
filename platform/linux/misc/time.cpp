#include "platform/linux/misc/time.h"

#include <time.h>

#include <chrono>

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr sys_days kFirstDay{std::chrono::year{1601} / 1 / 1};
constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

constexpr std::uint64_t kUnitsPerMs = 10'000;
constexpr std::uint32_t kMsPerSecond = 1000;
constexpr std::uint32_t kMsPerMinute = 60 * kMsPerSecond;
constexpr std::uint32_t kMsPerHour = 60 * kMsPerMinute;
constexpr std::uint32_t kMsPerDay = 24 * kMsPerHour;
constexpr std::uint64_t kUnixEpochMs =
    static_cast<std::uint64_t>((sys_days{} - kFirstDay).count()) * kMsPerDay;

}  // namespace

extern "C" {

void WINAPI GetSystemTime(SYSTEMTIME* now) {
  // As on Windows, the system time advances with the timer's tick; reading it costs a few ns.
  timespec time{};
  clock_gettime(CLOCK_REALTIME_COARSE, &time);
  constexpr std::int64_t kNanosecondsPerMs = 1'000'000;
  const std::uint64_t milliseconds =
      kUnixEpochMs + static_cast<std::uint64_t>(time.tv_sec * std::int64_t{kMsPerSecond} +
                                                time.tv_nsec / kNanosecondsPerMs);
  // No time zone, no C library calendar, 32 bits within the day: this runs for every value that the
  // library looks at.
  const auto day = static_cast<std::uint32_t>(milliseconds / kMsPerDay);
  const auto rest = static_cast<std::uint32_t>(milliseconds % kMsPerDay);
  const year_month_day date{kFirstDay + std::chrono::days{static_cast<int>(day)}};
  constexpr std::uint32_t kMonday = 1;  // 1601-01-01
  now->wYear = static_cast<WORD>(int{date.year()});
  now->wMonth = static_cast<WORD>(unsigned{date.month()});
  now->wDayOfWeek = static_cast<WORD>((day + kMonday) % 7);
  now->wDay = static_cast<WORD>(unsigned{date.day()});
  now->wHour = static_cast<WORD>(rest / kMsPerHour);
  now->wMinute = static_cast<WORD>(rest % kMsPerHour / kMsPerMinute);
  now->wSecond = static_cast<WORD>(rest % kMsPerMinute / kMsPerSecond);
  now->wMilliseconds = static_cast<WORD>(rest % kMsPerSecond);
}

BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* fileTime) {
  const SYSTEMTIME& time = *systemTime;
  const year_month_day date{std::chrono::year{time.wYear}, std::chrono::month{time.wMonth},
                            std::chrono::day{time.wDay}};
  // The calendar's types hold a month or a day in one byte.
  if (time.wYear < kFirstYear || time.wYear > kLastYear || time.wMonth > 12 || time.wDay > 31 ||
      !date.ok() || time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59 ||
      time.wMilliseconds > 999) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  const std::uint64_t days = static_cast<std::uint64_t>((sys_days{date} - kFirstDay).count());
  const std::uint32_t ofDay = time.wHour * kMsPerHour + time.wMinute * kMsPerMinute +
                              time.wSecond * kMsPerSecond + time.wMilliseconds;
  const std::uint64_t milliseconds = days * kMsPerDay + ofDay;
  const std::uint64_t units = milliseconds * kUnitsPerMs;
  fileTime->dwLowDateTime = static_cast<DWORD>(units);
  fileTime->dwHighDateTime = static_cast<DWORD>(units >> 32);
  return TRUE;
}

}  // extern "C"
