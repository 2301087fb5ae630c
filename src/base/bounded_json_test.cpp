#include "base/bounded_json.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

TEST(CountJsonElements, BracketsAndCommasOutsideOfText) {
  const struct {
    const char* text;
    size_t count;
  } cases[] = {
      {"", 0},
      {"7", 0},
      {"[]", 1},
      {R"({"a":[1,2],"b":{}})", 5},
      {R"(["[{,", ",\",["])", 2},
      {R"(["\\",",[",1])", 3},
      {R"(["\)", 1},
      {R"([",,,,)", 1},
      {"{{{[[,", 6},
  };
  for (const auto& [text, count] : cases) {
    EXPECT_EQ(CountJsonElements(text), count) << text;
  }
}

TEST(ParseJson, RefusesMoreElementsThanItMayCost) {
  EXPECT_EQ(CompactText(ParseJson(R"( {"a": [1, "x,y"]} )", 3)), R"({"a":[1,"x,y"]})");
  EXPECT_FALSE(ParseJson(R"({"a": [1, "x,y"]})", 2));
  std::string most = "[1";
  for (size_t i = 1; i < 262144; ++i) {
    most += ",1";
  }
  EXPECT_EQ(json_array_size(ParseJson(most + "]").Get()), 262144u);
  EXPECT_FALSE(ParseJson(most + ",1]"));
}

TEST(ParseJson, Damage) {
  for (const char* text : {"", " ", "7", "[", "[] x", "[\"\xFF\"]", R"(["\u0000"])", "[1e400]"}) {
    EXPECT_FALSE(ParseJson(text)) << text;
  }
}

}  // namespace
}  // namespace ostrell
