#pragma once

#include <cstdint>
#include <optional>

namespace ostrell {

// Times as Windows counts them: ticks of 100 ns since 1601-01-01 00:00:00 UTC (a FILETIME's
// number), and their calendar form, which reaches from 1601 to 30827.

// The vendor's SYSTEMTIME, field by field.
struct SystemTime {
  uint16_t year;
  uint16_t month;
  uint16_t dayOfWeek;  // 0 is Sunday
  uint16_t day;
  uint16_t hour;
  uint16_t minute;
  uint16_t second;
  uint16_t milliseconds;
};

inline constexpr uint64_t kTicksPerSecond = 10000000;
inline constexpr int64_t kSecondsFrom1601To1970 = 11644473600;

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
std::optional<uint64_t> TicksFromSystemTime(const SystemTime& utc);

// Seconds since 1970 of a time in UTC, the fraction dropped; -1 when it has no ticks.
int64_t SecondsSince1970(const SystemTime& utc);

// What FileTimeToSystemTime gives: nothing when the highest bit is set.
std::optional<SystemTime> SystemTimeFromTicks(uint64_t ticks);

// a - b in two's complement, wrapping. Times come from a store that anyone may have written to.
constexpr int64_t WrappingDifference(int64_t a, int64_t b) {
  return static_cast<int64_t>(static_cast<uint64_t>(a) - static_cast<uint64_t>(b));
}

}  // namespace ostrell
