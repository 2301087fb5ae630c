#include "env/report_clock_win.h"

#include <gtest/gtest.h>

#include <ctime>

#include "env/report_clock.h"

namespace ostrell {
namespace {

TEST(ReportClockTest, SecondsOfKnownTimes) {
  const struct {
    SYSTEMTIME utc;  // year, month, day of the week, day, hour, minute, second, millisecond
    int64_t seconds;
  } cases[] = {{{1970, 1, 0, 1, 0, 0, 0, 999}, 0},
               {{1970, 1, 0, 2, 0, 0, 1, 0}, 86401},
               {{2000, 2, 0, 29, 23, 59, 59, 0}, 951868799},
               {{2001, 9, 0, 9, 1, 46, 40, 0}, 1000000000},
               {{2038, 1, 0, 19, 3, 14, 8, 0}, 2147483648},
               {{2106, 2, 0, 7, 6, 28, 16, 0}, 4294967296},
               // The fraction is dropped towards 1601.
               {{1601, 1, 0, 1, 0, 0, 0, 999}, -11644473600},
               {{1969, 12, 0, 31, 23, 59, 58, 999}, -2},
               // No date.
               {{2024, 13, 0, 1, 0, 0, 0, 0}, -1},
               {{2024, 1, 0, 1, 24, 0, 0, 0}, -1},
               {{1600, 12, 0, 31, 23, 59, 59, 0}, -1},
               {{}, -1}};
  for (const auto& row : cases) {
    EXPECT_EQ(SecondsSince1970(row.utc), row.seconds) << row.utc.wYear << "-" << row.utc.wMonth;
  }
}

TEST(ReportClockTest, NowIsUtc) {
  const int64_t before = std::time(nullptr);
  const int64_t now = ReportClock();
  EXPECT_GE(now, before);
  EXPECT_LE(now, std::time(nullptr));
}

}  // namespace
}  // namespace ostrell
