#pragma once

#include <cstdint>

namespace ostrell {

// Seconds since 1970-01-01 00:00:00 UTC; -1 when the system time cannot be converted.
int64_t ReportClock();

}  // namespace ostrell
