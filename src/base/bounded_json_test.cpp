#include "base/bounded_json.h"

#include "tests/support/expect_recorded.h"

namespace ostrell {
namespace {

// How many elements there are, and what is parsed.
TEST(BoundedJson, RecordedCases) {
  ExpectRecorded("bounded_json", [](const std::string& input, const RecordedCase&) {
    return std::to_string(CountJsonElements(input)) + ":" + CompactText(ParseJson(input));
  });
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
