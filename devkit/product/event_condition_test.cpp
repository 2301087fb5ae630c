#include "devkit/product/event_condition.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

// The letters of the events that `xpath` selects; "none", or "refused" when it cannot be
// parsed.
std::string Selected(std::string_view xpath) {
  const auto at = [](const char* time) { return TicksFromEventTime(time); };
  const std::pair<char, EventSystem> kEvents[] = {
      {'a', {"Service Control Manager", 7000, 2, at("2024-01-01T00:00:00.0000000Z")}},
      {'b', {"Service Control Manager", 7009, 2, at("2024-01-31T23:59:59.0000001Z")}},
      {'c', {"Service Control Manager", 7001, 3, at("2024-01-31T23:59:59Z")}},
      {'d', {"service control manager", 7000, 0, at("2023-12-31T23:59:59.9999999Z")}},
      {'e', {}}};
  const EventCondition condition = ParseEventCondition(xpath);
  std::string letters;
  for (const auto& [letter, system] : kEvents) {
    letters += condition && condition(system) ? std::string(1, letter) : "";
  }
  return !condition ? "refused" : letters.empty() ? "none" : letters;
}

TEST(EventConditionTest, RecordedCases) {
  const RecordedCase cases(OSTRELL_PRODUCT_CASES "/event_condition.case");
  for (size_t i = 0; i < cases.All("xpath").size(); ++i) {
    const std::string xpath = cases.All("xpath")[i];
    EXPECT_EQ(Selected(xpath), cases.All("selects").at(i)) << xpath;
  }
}

}  // namespace
}  // namespace ostrell
