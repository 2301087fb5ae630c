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
      // A character is not a byte, and other letters than those of ASCII have a case, too.
      {"\xC3\xA9t\xC3\xA9", "?t?", true},
      {"\xC3\xA9", "??", false},
      {"\xC3\xA9", "*??", false},
      {"\xC3\x89", "\xC3\xA9", true},
      {"Test/\xC3\x84rger.B", "*\xC3\xA4RGER*", true},
      {"\xCE\xA3\xCF\x82", "\xCF\x83\xCF\x83", true},
      {"\xE1\xBA\x9E", "\xC3\x9F", true},
      {"\xF0\x90\x90\x80", "\xF0\x90\x90\xA8", true},
      {"\xC4\xB0", "i", false},
      {"\xC3\xA9", "e", false},
      {"[", "{", false},
      // Each byte of damaged text is a character: cut, alone, too long, a surrogate, past the last.
      {"a\xC3", "a\xC3", true},
      {"a\xC3", "a\xE3", false},
      {"a\xC3", "a?", true},
      {"\xC3\x89", "\xC3*", false},
      {"\xA9\xA9", "??", true},
      {"\xE9", "\xC3\xA9", false},
      {"\xC1\x81", "a", false},
      {"\xC1\x81", "??", true},
      {"\xE0\x81\x81", "???", true},
      {"\xF0\x80\x81\x81", "????", true},
      {"\xED\xA0\x80", "???", true},
      {"\xED\x9F\xBF\xEE\x80\x80", "??", true},
      {"\xF4\x90\x80\x80", "????", true},
      {"\xF4\x8F\xBF\xBF", "?", true},
      {"\xF8\x90\x80\x80", "????", true},
      {"\xC3\xA9", "*\xA9", false},
      {"\xE2\x82z", "??Z", true},
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
