#include "unified/log_line.h"

#include <cstdio>
#include <ctime>
#include <random>

#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

// What the time zone makes of a stamp is tested in local_time_test.cpp.
TEST(LogLine, RecordedCases) {
  const int64_t ten = LogLineTime("[2025-03-01 10:00:00").value_or(0);
  const auto text = [](std::optional<int64_t> number, int64_t base) {
    return number ? std::to_string(*number - base) : "none";
  };
  ExpectRecorded("log_line", [&](const std::string& line, const auto&) {
    return text(LogLineTime(line), ten) + "|" + text(PeTimeMarker(line), 0);
  });
}

TEST(LogLine, TimeOutOfRangeIsMktimesAnswer) {
  EXPECT_TRUE(LogLineTime("[0000-00-00 00:00:00").has_value());
  EXPECT_TRUE(LogLineTime("[-999--9--9 -9:-9:-9").has_value());
  EXPECT_TRUE(LogLineTime("[9999-99-99 99:99:99").has_value());
}

// Stamps with one to three characters replaced.
TEST(LogLine, StampIsReadAsScanfDoes) {
  std::mt19937 random(1);
  const std::string letters = "0123456789+-[: \t\n\v/x";
  int stamps = 0;
  for (int i = 0; i < 50000; ++i) {
    std::string line = "[2025-03-01 10:00:00";
    for (size_t changes = 1 + random() % 3; changes > 0; --changes) {
      line[random() % line.size()] = letters[random() % letters.size()];
    }
    std::tm time{};
    char separators[2];
    const bool isStamp = std::sscanf(line.c_str(), "[%04d%c%02d%c%02d %02d:%02d:%02d",
                                     &time.tm_year, &separators[0], &time.tm_mon, &separators[1],
                                     &time.tm_mday, &time.tm_hour, &time.tm_min, &time.tm_sec) == 8;
    time.tm_year -= 1900;
    time.tm_mon -= 1;
    time.tm_isdst = -1;
    ASSERT_EQ(LogLineTime(line),
              isStamp ? std::optional<int64_t>(std::mktime(&time)) : std::nullopt)
        << line;
    stamps += isStamp ? 1 : 0;
  }
  EXPECT_GT(stamps, 10000);
}

}  // namespace
}  // namespace ostrell
