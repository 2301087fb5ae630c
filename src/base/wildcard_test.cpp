#include "base/wildcard.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

TEST(Wildcard, Matches) {
  const struct {
    const char* text;
    const char* pattern;
    bool matches;
  } cases[] = {
      {"", "", true},
      {"a", "", false},
      {"", "*", true},
      {"", "?", false},
      {"Virus/A", "virus/a", true},
      {"Virus/A", "virus/", false},
      {"Virus/A", "irus/a", false},
      {"Test/Eicar.B", "test/*", true},
      {"Test/Eicar.B", "test>b", true},
      {"Test/Eicar.B", "*>*", true},
      {"Test/Eicar.B", "test/?icar.?", true},
      {"Test/Eicar.B", "test/?icar.??", false},
      {"Test/Eicar.B", "*eicar", false},
      // The run that matches first is not the right one.
      {"abcabd", "*abd", true},
      {"aXbXc", "a*X?", true},
      {"aXbXcc", "a*X?", false},
      {"mississippi", "m*iss*ip*", true},
      {"mississippi", "m*iss*ix*", false},
      // A character is not a byte; past ASCII the case counts.
      {"\xC3\xA9t\xC3\xA9", "?t?", true},
      {"\xC3\xA9", "??", false},
      {"\xC3\xA9", "*??", false},
      {"\xC3\x89", "\xC3\xA9", false},
      {"[", "{", false},
  };
  for (const auto& [text, pattern, matches] : cases) {
    EXPECT_EQ(MatchesWildcard(text, pattern), matches) << text << " " << pattern;
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
