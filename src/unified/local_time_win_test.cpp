#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include "base/calendar.h"
#include "unified/collector.h"

namespace ostrell {
namespace {

// The offset of today, in seconds east of UTC.
int64_t OffsetOfToday() {
  TIME_ZONE_INFORMATION zone{};
  const bool isSummer = GetTimeZoneInformation(&zone) == TIME_ZONE_ID_DAYLIGHT;
  return -60 * int64_t{zone.Bias + (isSummer ? zone.DaylightBias : zone.StandardBias)};
}

// 15 January and 15 July 2025, noon UTC, and what the zone is ahead then.
struct Instant {
  int64_t seconds;
  int64_t berlin;
};
constexpr Instant kInstants[] = {{1736942400, 3600}, {1752580800, 7200}};

TEST(LocalTime, FileTimes) {
  const char* const named = std::getenv("OSTRELL_TEST_ZONE");
  ASSERT_NE(named, nullptr);
  const std::string zone = named;
  const int64_t fixed = zone == "Asia/Kolkata" ? 19800 : 0;
  for (const Instant& instant : kInstants) {
    const int64_t offset = zone == "Europe/Berlin" ? instant.berlin : fixed;
    const int64_t expected = instant.seconds + OffsetOfToday() - offset;
    EXPECT_EQ(LocalTimeSeconds(SystemClock(), TicksFromSeconds(instant.seconds)), expected)
        << zone << " " << instant.seconds;
  }
  EXPECT_EQ(LocalTimeSeconds(SystemClock(), ~uint64_t{0}), -1);  // no date
}

// Whatever the zone is.
TEST(LocalTime, ReportClockIsUtc) {
  const int64_t before = std::time(nullptr);
  const int64_t now = ReportClock();
  EXPECT_GE(now, before);
  EXPECT_LE(now, std::time(nullptr));
}

}  // namespace
}  // namespace ostrell
