#pragma once

#include <cstdint>

#include "env/report_clock.h"

namespace ostrell {

// How the unified report dates files and events: the time, ticks (calendar.h) in UTC, is made local
// with the offset of today, broken down, and made seconds since 1970 again with the offset that
// holds at that date (mktime). So a time on the other side of a daylight-saving change is off by
// the difference. -1 where mktime gives up.
int64_t LocalTimeSeconds(const Clock& clock, uint64_t utcTicks);

}  // namespace ostrell
