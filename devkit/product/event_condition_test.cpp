#include "devkit/product/event_condition.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

EventSystem Event(const char* provider, uint64_t id, uint64_t level, const char* time) {
  return {provider, id, level, TicksFromEventTime(time)};
}

// The letters of the events that `xpath` selects; "refused" when it cannot be parsed.
std::string Selected(std::string_view xpath) {
  const struct {
    char letter;
    EventSystem system;
  } kEvents[] = {
      {'a', Event("Service Control Manager", 7000, 2, "2024-01-01T00:00:00.0000000Z")},
      {'b', Event("Service Control Manager", 7009, 2, "2024-01-31T23:59:59.0000001Z")},
      {'c', Event("Service Control Manager", 7001, 3, "2024-01-31T23:59:59Z")},
      {'d', Event("service control manager", 7000, 0, "2023-12-31T23:59:59.9999999Z")},
      {'e', {}},
  };
  const EventCondition condition = ParseEventCondition(xpath);
  std::string letters;
  for (const auto& event : kEvents) {
    letters += condition && condition(event.system) ? std::string(1, event.letter) : "";
  }
  return condition ? letters : "refused";
}

TEST(EventConditionTest, Selects) {
  const struct {
    const char* xpath;
    const char* letters;
  } kCases[] = {
      {"*", "abcde"},
      {" * [ System [ EventID = 7000 ] ] ", "ad"},
      {"*[System[(Provider/@Name='Service Control Manager')]]", "abc"},
      {"*[System[Provider/@Name='Service Control']]", ""},
      {"*[System[EventID >= 7001]]", "bc"},
      {"*[System[EventID <= 7001]]", "acd"},
      {"*[System[Level=0]]", "d"},
      {"*[System[TimeCreated/@SystemTime >= '2024-01-01T00:00:00.000000Z']]", "abc"},
      {"*[System[TimeCreated/@SystemTime <= '2024-01-31T23:59:59.000000Z']]", "acd"},
      {"*[System[TimeCreated/@SystemTime = '2024-01-31T23:59:59.000Z']]", "c"},
      {"*[System[EventID=7000 or EventID=7009 and Level=3]]", "ad"},
      {"*[System[Level=3 and EventID=7009 or EventID=7000]]", "ad"},
      {"*[System[(EventID=7000 or EventID=7009) and Level=2]]", "ab"},
      {"*[System[((((EventID=7001))))]]", "c"},
      {"*[System[EventID=18446744073709551615]]", ""},
  };
  for (const auto& [xpath, letters] : kCases) {
    EXPECT_EQ(Selected(xpath), letters) << xpath;
  }
}

TEST(EventConditionTest, RefusesWhatItCannotParse) {
  for (const char* xpath : {
           "",
           "*[System[]]",
           "*[System[EventID=1]",
           "*[System[EventID=1]] or",
           "*[EventData[EventID=1]]",
           "*[System[(EventID=1]]",
           "*[System[( and TimeCreated/@SystemTime <= '2024-01-31T23:59:59.000000Z')]]",
           "*[System[EventID=1 or]]",
           "*[System[EventID=1 EventID=2]]",
           "*[System[EventID='1']]",
           "*[System[EventID=-1]]",
           "*[System[EventID=18446744073709551616]]",
           "*[System[EventID > 1]]",
           "*[System[EventID &gt;= 1]]",
           "*[System[eventid=1]]",
           "*[System[Task=1]]",
           "*[System[Provider/@Name >= 'A']]",
           "*[System[Provider/@Name='A]]",
           "*[System[Provider/@Name='O'Neil']]",
           "*[System[TimeCreated/@SystemTime >= '2024-02-30T00:00:00Z']]",
           "*[System[TimeCreated/@SystemTime >= 2024]]",
       }) {
    EXPECT_EQ(Selected(xpath), "refused") << xpath;
  }
}

TEST(EventConditionTest, ParenthesesAreBounded) {
  const auto nested = [](size_t depth) {
    return "*[System[" + std::string(depth, '(') + "Level=0" + std::string(depth, ')') + "]]";
  };
  EXPECT_EQ(Selected(nested(32)), "d");
  EXPECT_EQ(Selected(nested(33)), "refused");
  EXPECT_EQ(Selected("*[System[" + std::string(1000000, '(')), "refused");
}

}  // namespace
}  // namespace ostrell
