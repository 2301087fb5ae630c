#include "base/calendar.h"

#include <chrono>

namespace ostrell {
namespace {

using std::chrono::days;
using std::chrono::sys_days;

constexpr auto kEpoch = sys_days(std::chrono::year(1601) / 1 / 1);
constexpr uint64_t kMillisecondsPerDay = 86400000;
constexpr uint64_t kTicksPerMillisecond = kTicksPerSecond / 1000;

// The years that Windows converts to ticks.
constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

}  // namespace

std::optional<uint64_t> TicksFromSystemTime(const SystemTime& utc) {
  // Both are kept as one byte.
  if (utc.month > 12 || utc.day > 31) {
    return std::nullopt;
  }
  const std::chrono::year_month_day date{std::chrono::year(utc.year), std::chrono::month(utc.month),
                                         std::chrono::day(utc.day)};
  if (utc.year < kFirstYear || utc.year > kLastYear || !date.ok() || utc.hour > 23 ||
      utc.minute > 59 || utc.second > 59 || utc.milliseconds > 999) {
    return std::nullopt;
  }
  const auto dayCount = static_cast<uint64_t>((sys_days(date) - kEpoch).count());
  const uint64_t seconds = (utc.hour * 60ULL + utc.minute) * 60 + utc.second;
  return (dayCount * kMillisecondsPerDay + seconds * 1000 + utc.milliseconds) *
         kTicksPerMillisecond;
}

int64_t SecondsSince1970(const SystemTime& utc) {
  const auto ticks = TicksFromSystemTime(utc);
  return ticks ? SecondsFromTicks(*ticks) : -1;
}

std::optional<SystemTime> SystemTimeFromTicks(uint64_t ticks) {
  if (static_cast<int64_t>(ticks) < 0) {
    return std::nullopt;
  }
  const uint64_t milliseconds = ticks / kTicksPerMillisecond;
  const auto day = kEpoch + days(milliseconds / kMillisecondsPerDay);
  const std::chrono::year_month_day date(day);
  const auto rest = static_cast<uint32_t>(milliseconds % kMillisecondsPerDay);
  SystemTime utc{};
  utc.year = static_cast<uint16_t>(static_cast<int>(date.year()));
  utc.month = static_cast<uint16_t>(static_cast<unsigned>(date.month()));
  utc.day = static_cast<uint16_t>(static_cast<unsigned>(date.day()));
  utc.dayOfWeek = static_cast<uint16_t>(std::chrono::weekday(day).c_encoding());
  utc.hour = static_cast<uint16_t>(rest / 3600000);
  utc.minute = static_cast<uint16_t>(rest / 60000 % 60);
  utc.second = static_cast<uint16_t>(rest / 1000 % 60);
  utc.milliseconds = static_cast<uint16_t>(rest % 1000);
  return utc;
}

}  // namespace ostrell
