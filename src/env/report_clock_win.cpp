#include "env/report_clock_win.h"

#include "env/report_clock.h"

namespace ostrell {
namespace {

constexpr int64_t kTicksPerSecond = 10000000;
constexpr int64_t kSecondsFrom1601To1970 = 11644473600;

}  // namespace

int64_t SecondsSince1970(const SYSTEMTIME& utc) {
  FILETIME time;
  if (!SystemTimeToFileTime(&utc, &time)) {
    return -1;
  }
  const auto ticks = static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
  return ticks / kTicksPerSecond - kSecondsFrom1601To1970;
}

int64_t ReportClock() {
  SYSTEMTIME utc;
  GetSystemTime(&utc);
  return SecondsSince1970(utc);
}

}  // namespace ostrell
