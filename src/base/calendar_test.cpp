#include "base/calendar.h"

#include <gtest/gtest.h>

namespace ostrell {
namespace {

SystemTime Date(uint16_t year, uint16_t month, uint16_t day, uint16_t hour = 0) {
  SystemTime utc{};
  utc.year = year;
  utc.month = month;
  utc.day = day;
  utc.hour = hour;
  return utc;
}

TEST(Calendar, KnownInstants) {
  EXPECT_EQ(TicksFromSystemTime(Date(1601, 1, 1)), 0u);
  EXPECT_EQ(TicksFromSystemTime(Date(1970, 1, 1)), 116444736000000000u);
  // date -d '2024-02-29 23:00 UTC' +%s
  EXPECT_EQ(TicksFromSystemTime(Date(2024, 2, 29, 23)), TicksFromSeconds(1709247600));
  const auto leapDay = SystemTimeFromTicks(TicksFromSeconds(1709247600) + 9999999);
  ASSERT_TRUE(leapDay.has_value());
  EXPECT_EQ(leapDay->month, 2);
  EXPECT_EQ(leapDay->day, 29);
  EXPECT_EQ(leapDay->hour, 23);
  EXPECT_EQ(leapDay->dayOfWeek, 4);
  EXPECT_EQ(leapDay->milliseconds, 999);
}

TEST(Calendar, RefusesWhatIsNoDate) {
  for (const SystemTime& utc :
       {SystemTime{}, Date(1600, 12, 31), Date(2023, 2, 29), Date(2024, 0, 1), Date(2024, 13, 1),
        Date(2024, 1, 1, 24), Date(30828, 1, 1)}) {
    EXPECT_EQ(TicksFromSystemTime(utc), std::nullopt) << utc.year << utc.month << utc.day;
  }
}

TEST(Calendar, LastTick) {
  const auto last = SystemTimeFromTicks(0x7FFFFFFFFFFFFFFF);
  ASSERT_TRUE(last.has_value());
  EXPECT_EQ(last->year, 30828);
  EXPECT_EQ(SystemTimeFromTicks(0x8000000000000000), std::nullopt);
}

TEST(Calendar, SecondsOfKnownTimes) {
  const struct {
    SystemTime utc;  // year, month, day of the week, day, hour, minute, second, millisecond
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
    EXPECT_EQ(SecondsSince1970(row.utc), row.seconds) << row.utc.year << "-" << row.utc.month;
  }
}

}  // namespace
}  // namespace ostrell
