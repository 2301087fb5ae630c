#include "devkit/fleet/fleet.h"

#include <gtest/gtest.h>

namespace ostrell {
namespace {

constexpr int64_t kHour = 3600;

// One machine's day: a start every hour, nothing sent before. An upload is two requests.
const FleetOptions kOneMachine{.machines = 1, .days = 1, .spread = 0, .hasSentBefore = false};

QuarterTraffic DayOf(const FleetOptions& options) {
  QuarterTraffic day{};
  for (const QuarterTraffic& quarter : SimulateFleet(options)) {
    for (size_t i = 0; i < day.size(); ++i) {
      day[i] += quarter[i];
    }
  }
  return day;
}

// Four hours are enough for rc2, rc5 and rc7, starts 0, 4, ... 20; rc3 takes more than four, starts
// 0, 5, ... 20, and has three passes.
TEST(Fleet, OrdinaryDay) {
  EXPECT_EQ(DayOf(kOneMachine), (QuarterTraffic{24, 12, 12, 15, 2, 12, 77}));
}

// Starts 4 to 9 fail. Each of them tries rc2, rc5 and rc7; these go out at 0, 10, 14, 18 and 22.
// Two of the passes are given up at start 5, the third waits for start 10.
TEST(Fleet, Outage) {
  FleetOptions options = kOneMachine;
  options.outage = {.from = 4 * kHour, .to = 10 * kHour};
  constexpr int64_t kUploads = 10 + 6;
  EXPECT_EQ(DayOf(options),
            (QuarterTraffic{24, kUploads, kUploads, 5 + 5 + 4, 2, kUploads, 40 + 3 * kUploads}));
}

TEST(Fleet, OneStartMoreAsksOnceMore) {
  FleetOptions options = kOneMachine;
  options.everyoneStarts = {.from = 12 * kHour, .to = 12 * kHour + 600};
  EXPECT_EQ(DayOf(options), (QuarterTraffic{25, 12, 12, 15, 2, 12, 78}));
}

}  // namespace
}  // namespace ostrell
