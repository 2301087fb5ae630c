#include "base/wildcard.h"

#include <gtest/gtest.h>

#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

// Of a text and a pattern with a bar between them.
bool Matches(const std::string& both) {
  const size_t bar = both.find('|');
  return MatchesWildcard(both.substr(0, bar), both.substr(bar + 1));
}

TEST(Wildcard, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("wildcard")) {
    for (const std::string& both : recorded.All("same")) {
      EXPECT_TRUE(Matches(both)) << recorded.Name() << ": " << both;
    }
    for (const std::string& both : recorded.All("other")) {
      EXPECT_FALSE(Matches(both)) << recorded.Name() << ": " << both;
    }
  }
}

// Trying every split of the text among the runs would not end.
TEST(Wildcard, TenThousandRuns) {
  std::string pattern;
  for (int i = 0; i < 10000; ++i) {
    pattern += "*a";
  }
  EXPECT_TRUE(MatchesWildcard(std::string(10000, 'a'), pattern));
  EXPECT_FALSE(MatchesWildcard(std::string(9999, 'a'), pattern));
  EXPECT_FALSE(MatchesWildcard(std::string(10000, 'a'), pattern + "b"));
  EXPECT_TRUE(MatchesWildcard("x", std::string(10000, '*')));
}

}  // namespace
}  // namespace ostrell
