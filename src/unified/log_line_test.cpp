#include "unified/log_line.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace ostrell {
namespace {

using namespace std::string_literals;

// What the time zone makes of a stamp is tested in local_time_test.cpp.
int64_t TenOnFirstOfMarch2025() {
  return LogLineTime("[2025-03-01 10:00:00").value_or(0);
}

TEST(LogLineTime, StampIsReadByScanfsRules) {
  const struct {
    const char* line;
    int64_t sinceTenOnFirstOfMarch;
  } cases[] = {
      {"[2025-03-01 10:00:01", 1},
      {"[2025/03.01 10:00:00", 0},
      {"[2025 03x01 10:00:00", 0},
      {"[2025-03-0110:00:00", 0},
      {"[2025-03-01 \t\v\f\r\n 10:00:00", 0},
      {"[ 2025- 3- 1 10: 0: 0", 0},
      {"[2025-+3-+1 10:00:00", 0},
      {"[2025-3-1 10:0:7x", 7},
      {"[2025-03-01 10:00:599", 59},
      {"[2025-03-01 10:60:00", 3600},
      {"[2025-03-01 10:00:-1", -1},
      {"[2024-15-01 10:00:00", 0},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(LogLineTime(row.line), TenOnFirstOfMarch2025() + row.sinceTenOnFirstOfMarch)
        << row.line;
  }
}

TEST(LogLineTime, PartOfAStampIsNone) {
  for (const auto& line :
       {""s, "["s, "2025-03-01 10:00:00"s, " [2025-03-01 10:00:00"s,
        "\xEF\xBB\xBF[2025-03-01 10:00:00"s, "[2025-03-01 10:00:"s, "[2025-03-01 10:00"s,
        "[2025-03-01 10:00:x"s, "[2025-03-01T10:00:00"s, "[2025--03-01 10:00:-"s,
        "[2025-03-01 10.00.00"s, "[2025-03-01 10 :00:00"s, "[02025-03-01 10:00:00"s,
        "[2025-03-01 10:\0"
        "00:00"s}) {
    EXPECT_EQ(LogLineTime(line), std::nullopt) << line;
  }
}

TEST(LogLineTime, TimeOutOfRangeIsMktimesAnswer) {
  EXPECT_TRUE(LogLineTime("[0000-00-00 00:00:00").has_value());
  EXPECT_TRUE(LogLineTime("[-999--9--9 -9:-9:-9").has_value());
  EXPECT_TRUE(LogLineTime("[9999-99-99 99:99:99").has_value());
}

TEST(PeTimeMarker, NumberStandsBetweenMarkerAndBracket) {
  constexpr auto kMax = std::numeric_limits<int64_t>::max();
  constexpr auto kMin = std::numeric_limits<int64_t>::min();
  const struct {
    std::string line;
    std::optional<int64_t> time;
  } cases[] = {
      {"[2025-03-01 10:00:00] <pe-time:1712345678> x", 1712345678},
      {"<pe-time:1>", 1},
      {"<pe-time: \t+12>", 12},
      {"<pe-time:-12>", -12},
      {"<pe-time:12x34>", 12},
      {"<pe-time:0x10>", std::nullopt},
      {"<pe-time:12\0"
       "34>"s,
       12},
      {"<pe-time:9223372036854775807>", kMax},
      {"<pe-time:9223372036854775808>", kMax},
      {"<pe-time:-9223372036854775809>", kMin},
      {"\0<pe-time:12>"s, 12},
      {"> <pe-time:12 <pe-time:34>", 12},
      {"<pe-time:x> <pe-time:34>", std::nullopt},
      {"<pe-time:> 12>", std::nullopt},
      {"<pe-time:>", std::nullopt},
      {"<pe-time:0>", std::nullopt},
      {"<pe-time:-0>", std::nullopt},
      {"<pe-time:12", std::nullopt},
      {"<pe-time:", std::nullopt},
      {"<PE-TIME:12>", std::nullopt},
      {"<pe-time12>", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(PeTimeMarker(row.line), row.time) << row.line;
  }
}

}  // namespace
}  // namespace ostrell
