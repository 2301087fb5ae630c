#pragma once

#include <windows.h>

#include <cstdint>

namespace ostrell {

constexpr FILETIME FileTimeFromTicks(uint64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// How the unified report dates files and events: the time is made local with the offset of today
// (FileTimeToLocalFileTime), broken down, and made seconds since 1970 again with the offset that
// holds at that date (mktime). So a time on the other side of a daylight-saving change is off by
// the difference. -1 where mktime gives up.
int64_t LocalTimeSeconds(const FILETIME& utc);

}  // namespace ostrell
