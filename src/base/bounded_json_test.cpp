#include "base/bounded_json.h"

#include <cstdlib>

#include "base/json_array_text.h"
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

// jansson drops bytes of the long text where its buffer cannot grow.
TEST(BoundedJson, IsWholeOrNothingWithoutMemory) {
  static int left = 0;
  json_malloc_t allocate = nullptr;
  json_free_t release = nullptr;
  json_get_alloc_funcs(&allocate, &release);
  const std::string text = R"({"key":")" + std::string(5000, 'x') + R"("})";
  int refused = 0;
  for (std::string parsed; parsed != text; ++refused) {
    left = refused;
    json_set_alloc_funcs([](size_t size) { return left-- == 0 ? nullptr : std::malloc(size); },
                         std::free);
    const JsonOwner value = ParseJson(text);
    json_set_alloc_funcs(allocate, release);
    parsed = CompactText(value);
    ASSERT_TRUE(parsed.empty() || parsed == text) << "without allocation " << refused;
  }
  EXPECT_GT(refused, 15);
}

TEST(JsonArrayText, ElementsOfAnyLength) {
  JsonArrayText text;
  std::string expected;
  for (const size_t length : {0, 4082, 4083, 100000, 1}) {
    const std::string element = R"({"name":")" + std::string(length, 'n') + R"("})";
    text.Add(ParseJson(element).Get());
    expected += (expected.empty() ? "[" : ",") + element;
  }
  EXPECT_EQ(text.Take(), expected + "]");
  EXPECT_FALSE(text.Take());
}

TEST(JsonArrayText, OneThatCannotBeWrittenSpoilsTheWhole) {
  const JsonOwner sound(ParseJson("{}"));
  const JsonOwner scalar(json_integer(5));
  const JsonOwner notUtf8(json_pack("[o]", json_string_nocheck("\xFF")));
  for (const json_t* const element : {notUtf8.Get(), scalar.Get(), static_cast<json_t*>(nullptr)}) {
    JsonArrayText text;
    text.Add(sound.Get());
    text.Add(element);
    text.Add(sound.Get());
    EXPECT_FALSE(text.Take());
    text.Add(sound.Get());
    EXPECT_EQ(text.Take(), "[{}]");
  }
}

}  // namespace
}  // namespace ostrell
