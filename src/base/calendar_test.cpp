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

}  // namespace
}  // namespace ostrell
