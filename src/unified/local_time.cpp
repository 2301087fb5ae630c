#include "unified/local_time.h"

#include <ctime>

#include "base/calendar.h"

namespace ostrell {

int64_t LocalTimeSeconds(const Clock& clock, uint64_t utcTicks) {
  const SystemTime fields = SystemTimeFromTicks(clock.LocalTicks(utcTicks)).value_or(SystemTime{});
  std::tm calendar{};
  calendar.tm_sec = fields.second;
  calendar.tm_min = fields.minute;
  calendar.tm_hour = fields.hour;
  calendar.tm_mday = fields.day;
  calendar.tm_mon = fields.month - 1;
  calendar.tm_year = fields.year - 1900;
  calendar.tm_isdst = -1;
  return std::mktime(&calendar);
}

}  // namespace ostrell
