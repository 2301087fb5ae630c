#include <windows.h>

#include <bit>

#include "base/calendar.h"
#include "env/report_clock.h"

namespace ostrell {
namespace {

class WindowsClock : public Clock {
 public:
  int64_t Now() const override { return ReportClock(); }

  uint64_t LocalTicks(uint64_t utcTicks) const override {
    const FILETIME utc{static_cast<DWORD>(utcTicks), static_cast<DWORD>(utcTicks >> 32)};
    FILETIME local{};
    FileTimeToLocalFileTime(&utc, &local);
    return uint64_t{local.dwHighDateTime} << 32 | local.dwLowDateTime;
  }
};

}  // namespace

int64_t ReportClock() {
  SYSTEMTIME utc;
  GetSystemTime(&utc);
  return SecondsSince1970(std::bit_cast<SystemTime>(utc));
}

const Clock& SystemClock() {
  static const WindowsClock clock;
  return clock;
}

}  // namespace ostrell
