#include "unified/log_matches.h"

#include <gtest/gtest.h>

#include "tests/support/plain_log_reading.h"

namespace ostrell {
namespace {

// Which lines count is a matter of tests/cases/log_stats.
LogMatchCount Collect(const std::string& log, std::vector<LogMatch>& matches) {
  return CollectLogMatches(ReaderOf(log), "0 failed", 0, matches);
}

TEST(LogMatches, TextTogetherIsBounded) {
  constexpr size_t kMaxOfLine = size_t{16} << 20;
  const std::string start = "[2025-03-01 10:00:00] 0 failed";
  const std::string longest = start + std::string(kMaxOfLine - start.size(), '.');
  const std::string three = longest + "\n" + longest + ".\n" + longest + "\n";
  std::vector<LogMatch> matches;
  EXPECT_EQ(Collect(three + longest, matches), (LogMatchCount{.kept = 4, .cut = 1}));
  // What does not fit leaves out what would.
  matches.clear();
  EXPECT_EQ(Collect(three + start + "\n" + longest + "\n" + start + "\n", matches),
            (LogMatchCount{.kept = 4, .leftOut = 2, .cut = 1}));
  EXPECT_EQ(matches[1].line, longest);
}

}  // namespace
}  // namespace ostrell
