#include "unified/log_matches.h"

#include <gtest/gtest.h>

#include "tests/support/plain_log_reading.h"
#include "unified/log_line.h"

namespace ostrell {
namespace {

const std::string kStamp = "[2025-03-01 10:00:00] ";

struct Collected {
  LogMatchCount count;
  std::vector<LogMatch> matches;
};
Collected Collect(const std::string& log) {
  Collected result;
  result.count =
      CollectLogMatches(ReaderOf(log), "0 failed", LogLineTime(kStamp).value_or(0), result.matches);
  return result;
}

TEST(LogMatches, OnlyThoseOfThePeriod) {
  const auto [count, matches] = Collect("[2025-03-01 09:59:59] 0 failed\n" + kStamp +
                                        "0 FAILED x\r\n0 failed\n" + kStamp + "1 failed\n");
  EXPECT_EQ(count, LogMatchCount{.kept = 1});
  ASSERT_EQ(matches.size(), 1U);
  EXPECT_EQ(matches[0].line, kStamp + "0 FAILED x");
  EXPECT_EQ(matches[0].time, LogLineTime(kStamp));
}

TEST(LogMatches, TextTogetherIsBounded) {
  constexpr size_t kMaxOfLine = size_t{16} << 20;
  const std::string start = kStamp + "0 failed";
  const std::string longest = start + std::string(kMaxOfLine - start.size(), '.');
  const std::string three = longest + "\n" + longest + ".\n" + longest + "\n";
  EXPECT_EQ(Collect(three + longest).count, (LogMatchCount{.kept = 4, .cut = 1}));
  // What does not fit leaves out what would.
  const auto [count, matches] = Collect(three + start + "\n" + longest + "\n" + start + "\n");
  EXPECT_EQ(count, (LogMatchCount{.kept = 4, .leftOut = 2, .cut = 1}));
  EXPECT_EQ(matches[1].line, longest);
}

}  // namespace
}  // namespace ostrell
