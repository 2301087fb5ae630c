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

std::optional<uint64_t> TicksFromSystemTime(const SYSTEMTIME& utc) {
  const std::chrono::year_month_day date{
      std::chrono::year(utc.wYear), std::chrono::month(utc.wMonth), std::chrono::day(utc.wDay)};
  if (utc.wYear < kFirstYear || utc.wYear > kLastYear || !date.ok() || utc.wHour > 23 ||
      utc.wMinute > 59 || utc.wSecond > 59 || utc.wMilliseconds > 999) {
    return std::nullopt;
  }
  const auto dayCount = static_cast<uint64_t>((sys_days(date) - kEpoch).count());
  const uint64_t seconds = (utc.wHour * 60ULL + utc.wMinute) * 60 + utc.wSecond;
  return (dayCount * kMillisecondsPerDay + seconds * 1000 + utc.wMilliseconds) *
         kTicksPerMillisecond;
}

std::optional<SYSTEMTIME> SystemTimeFromTicks(uint64_t ticks) {
  if (static_cast<int64_t>(ticks) < 0) {
    return std::nullopt;
  }
  const uint64_t milliseconds = ticks / kTicksPerMillisecond;
  const auto day = kEpoch + days(milliseconds / kMillisecondsPerDay);
  const std::chrono::year_month_day date(day);
  const auto rest = static_cast<uint32_t>(milliseconds % kMillisecondsPerDay);
  SYSTEMTIME utc{};
  utc.wYear = static_cast<uint16_t>(static_cast<int>(date.year()));
  utc.wMonth = static_cast<uint16_t>(static_cast<unsigned>(date.month()));
  utc.wDay = static_cast<uint16_t>(static_cast<unsigned>(date.day()));
  utc.wDayOfWeek = static_cast<uint16_t>(std::chrono::weekday(day).c_encoding());
  utc.wHour = static_cast<uint16_t>(rest / 3600000);
  utc.wMinute = static_cast<uint16_t>(rest / 60000 % 60);
  utc.wSecond = static_cast<uint16_t>(rest / 1000 % 60);
  utc.wMilliseconds = static_cast<uint16_t>(rest % 1000);
  return utc;
}

}  // namespace ostrell
