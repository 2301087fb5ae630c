#pragma once

#include <cstdint>

namespace ostrell {

// Seconds since 1970-01-01 00:00:00 UTC; -1 when the system time cannot be converted.
int64_t ReportClock();

// How jobs ask for the time while they run.
class Clock {
 public:
  Clock() = default;
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  virtual ~Clock() = default;

  // As ReportClock.
  virtual int64_t Now() const = 0;

  // Ticks (calendar.h) of local time by the offset that holds now, FileTimeToLocalFileTime; 0 when
  // they cannot be converted.
  virtual uint64_t LocalTicks(uint64_t utcTicks) const = 0;
};

// The clock of this machine.
const Clock& SystemClock();

}  // namespace ostrell
