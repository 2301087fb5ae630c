#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "base/calendar.h"
#include "tests/support/program_files_win.h"
#include "tests/support/recorded_events_win.h"
#include "unified/dump_files.h"
#include "unified/event_logs.h"

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
  const char* text;
  int64_t berlin;
};
constexpr Instant kInstants[] = {{1736942400, "2025-01-15T12:00:00Z", 3600},
                                 {1752580800, "2025-07-15T12:00:00.5Z", 7200}};

int64_t TimestampOf(const JsonOwner& items) {
  EXPECT_EQ(json_array_size(items.Get()), 1u);
  return json_integer_value(json_object_get(json_array_get(items.Get(), 0), "timestamp"));
}

TEST(LocalTime, DumpsAndEvents) {
  const char* const named = std::getenv("OSTRELL_TEST_ZONE");
  ASSERT_NE(named, nullptr);
  const std::string zone = named;
  const int64_t fixed = zone == "Asia/Kolkata" ? 19800 : 0;
  for (const Instant& instant : kInstants) {
    const int64_t offset = zone == "Europe/Berlin" ? instant.berlin : fixed;
    const int64_t expected = instant.seconds + OffsetOfToday() - offset;
    ProgramFiles files;
    ProgramFiles::SetTime(files.Write(L"zone.dmp", "x"),
                          FileTimeFromTicks(TicksFromSeconds(instant.seconds)));
    EXPECT_EQ(TimestampOf(collect_dump_files(0)), expected) << zone << " " << instant.text;

    files.Write(L"events\\System.xml", RecordedEventText{.provider = "Service Control Manager",
                                                         .id = "7000",
                                                         .data = "<Data>protsvc</Data>",
                                                         .time = instant.text}
                                           .Text());
    EXPECT_EQ(TimestampOf(collect_event_logs(0)), expected) << zone << " " << instant.text;
  }
  EXPECT_EQ(LocalTimeSeconds({0xFFFFFFFF, 0xFFFFFFFF}), -1);  // no date
}

}  // namespace
}  // namespace ostrell
