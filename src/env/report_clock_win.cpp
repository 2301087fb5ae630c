#include "env/report_clock_win.h"

#include <bit>

#include "base/calendar.h"
#include "env/report_clock.h"

namespace ostrell {

int64_t SecondsSince1970(const SYSTEMTIME& utc) {
  const auto ticks = TicksFromSystemTime(std::bit_cast<SystemTime>(utc));
  return ticks ? SecondsFromTicks(*ticks) : -1;
}

int64_t ReportClock() {
  SYSTEMTIME utc;
  GetSystemTime(&utc);
  return SecondsSince1970(utc);
}

}  // namespace ostrell
