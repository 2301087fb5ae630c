#include "unified/log_line.h"

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

}  // namespace
}  // namespace ostrell
