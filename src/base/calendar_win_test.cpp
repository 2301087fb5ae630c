#include <windows.h>

#include <gtest/gtest.h>

#include <bit>
#include <cstring>

#include "base/calendar.h"

namespace ostrell {
namespace {

// The system's own conversions, at steps that meet every kind of year and time of day.
TEST(Calendar, AgreesWithTheSystem) {
  for (uint64_t ticks = 0; ticks < 0x7FFE000000000000; ticks += 0x0000ABCDEF123457 * 7) {
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME expected{};
    ASSERT_TRUE(FileTimeToSystemTime(&time, &expected));
    const SystemTime utc = SystemTimeFromTicks(ticks).value();
    EXPECT_EQ(std::memcmp(&utc, &expected, sizeof expected), 0) << ticks;
    FILETIME back{};
    const bool converts = SystemTimeToFileTime(&expected, &back) != 0;
    const auto own = TicksFromSystemTime(std::bit_cast<SystemTime>(expected));
    ASSERT_EQ(own.has_value(), converts) << ticks;
    if (converts) {
      EXPECT_EQ(*own, uint64_t{back.dwHighDateTime} << 32 | back.dwLowDateTime);
    }
  }
}

}  // namespace
}  // namespace ostrell
