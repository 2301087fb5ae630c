#include "base/bounded_json.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

TEST(BoundedJson, RecordedCases) {
  for (const RecordedCase& recorded : CasesOf("bounded_json")) {
    const auto elements = recorded.All("elements");
    const auto parsed = recorded.All("parsed");
    for (size_t i = 0; const std::string& input : recorded.All("input")) {
      SCOPED_TRACE(recorded.Name() + ": " + input);
      EXPECT_EQ(std::to_string(CountJsonElements(input)), elements.at(i));
      EXPECT_EQ(CompactText(ParseJson(input)), parsed.at(i++));
    }
  }
}

TEST(BoundedJson, RefusesMoreElementsThanItMayCost) {
  EXPECT_TRUE(ParseJson(R"({"a": [1, "x,y"]})", 3));
  EXPECT_FALSE(ParseJson(R"({"a": [1, "x,y"]})", 2));
  std::string most = "[1";
  for (size_t i = 1; i < 262144; ++i) {
    most += ",1";
  }
  EXPECT_TRUE(ParseJson(most + "]"));
  EXPECT_FALSE(ParseJson(most + ",1]"));
}

}  // namespace
}  // namespace ostrell
