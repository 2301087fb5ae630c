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
  int64_t utc;     // were it the time in UTC
  int64_t berlin;  // what Berlin is ahead then
};

// By: TZ=Europe/Berlin date -d '2025-03-01 10:00:00' +%s
constexpr Stamp kStamps[] = {
    {"[2025-03-01 10:00:00]", 1740823200, 3600},
    {"[2025-07-01 10:00:00]", 1751364000, 7200},
    // The hour before the clocks go forward, and the hour after.
    {"[2025-03-30 01:59:59]", 1743299999, 3600},
    {"[2025-03-30 03:00:00]", 1743303600, 7200},
    // The hour before the one that the clocks go through twice, and the hour after.
    {"[2025-10-26 01:59:59]", 1761443999, 7200},
    {"[2025-10-26 03:00:00]", 1761447600, 3600},
};

TEST(LocalTime, LogLines) {
  const char* const zone = std::getenv("OSTRELL_TEST_ZONE");
  ASSERT_NE(zone, nullptr);
  for (const auto& [line, utc, berlin] : kStamps) {
    const std::map<std::string, int64_t> ahead = {
        {"UTC", 0}, {"Europe/Berlin", berlin}, {"Asia/Kolkata", 19800}};
    EXPECT_EQ(LogLineTime(line), utc - ahead.at(zone)) << zone << " " << line;
  }
}

}  // namespace
}  // namespace ostrell
