#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

#include "unified/log_line.h"

// Run once in each of three time zones, which OSTRELL_TEST_ZONE names.

namespace ostrell {
namespace {

struct Stamp {
  const char* line;
  int64_t utc;  // the same as if the zone were UTC
  int64_t berlin;
  int64_t kolkata;
};

// By: TZ=Europe/Berlin date -d '2025-03-01 10:00:00' +%s
constexpr Stamp kStamps[] = {
    {"[2025-03-01 10:00:00]", 1740823200, 1740819600, 1740803400},
    {"[2025-07-01 10:00:00]", 1751364000, 1751356800, 1751344200},
    // The hour before the clocks go forward, and the hour after.
    {"[2025-03-30 01:59:59]", 1743299999, 1743296399, 1743280199},
    {"[2025-03-30 03:00:00]", 1743303600, 1743296400, 1743283800},
    // The hour before the one that the clocks go through twice, and the hour after.
    {"[2025-10-26 01:59:59]", 1761443999, 1761436799, 1761424199},
    {"[2025-10-26 03:00:00]", 1761447600, 1761444000, 1761427800},
};

TEST(LocalTime, LogLines) {
  const char* const zone = std::getenv("OSTRELL_TEST_ZONE");
  ASSERT_NE(zone, nullptr);
  const std::map<std::string, int64_t Stamp::*> zones = {
      {"UTC", &Stamp::utc}, {"Europe/Berlin", &Stamp::berlin}, {"Asia/Kolkata", &Stamp::kolkata}};
  for (const Stamp& stamp : kStamps) {
    EXPECT_EQ(LogLineTime(stamp.line), stamp.*zones.at(zone)) << zone << " " << stamp.line;
  }
}

}  // namespace
}  // namespace ostrell
