#pragma once

#include <windows.h>

#include <cstdint>

namespace ostrell {

// Seconds since 1970-01-01 00:00:00 of a time in UTC, the fraction dropped: negative before 1970.
// -1 when it is no date or lies before 1601.
int64_t SecondsSince1970(const SYSTEMTIME& utc);

}  // namespace ostrell
