#pragma once

#include <cstdint>
#include <optional>

#ifdef _WIN32
#include <windows.h>
#else
// The system's structure, for code that also compiles off Windows. The fields are the vendor's.
struct SYSTEMTIME {
  uint16_t wYear;
  uint16_t wMonth;
  uint16_t wDayOfWeek;
  uint16_t wDay;
  uint16_t wHour;
  uint16_t wMinute;
  uint16_t wSecond;
  uint16_t wMilliseconds;
};
#endif

namespace ostrell {

// Times as Windows counts them: ticks of 100 ns since 1601-01-01 00:00:00 UTC (a FILETIME's
// number), and their calendar form, which reaches from 1601 to 30827.

inline constexpr uint64_t kTicksPerSecond = 10000000;
inline constexpr int64_t kSecondsFrom1601To1970 = 11644473600;

#ifdef _WIN32
constexpr FILETIME FileTimeFromTicks(uint64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}
#endif

// Ticks of a time in seconds since 1970; wraps for times that ticks cannot hold.
constexpr uint64_t TicksFromSeconds(int64_t seconds) {
  return (static_cast<uint64_t>(seconds) + static_cast<uint64_t>(kSecondsFrom1601To1970)) *
         kTicksPerSecond;
}

// Seconds since 1970, the fraction dropped: negative before 1970.
constexpr int64_t SecondsFromTicks(uint64_t ticks) {
  return static_cast<int64_t>(ticks / kTicksPerSecond) - kSecondsFrom1601To1970;
}

// What SystemTimeToFileTime gives: nothing for a time that is no date, or outside the range. The
// day of the week is not looked at.
std::optional<uint64_t> TicksFromSystemTime(const SYSTEMTIME& utc);

// What FileTimeToSystemTime gives: nothing when the highest bit is set.
std::optional<SYSTEMTIME> SystemTimeFromTicks(uint64_t ticks);

}  // namespace ostrell
