#include "devkit/product/record_query_evaluation.h"

#include <gtest/gtest.h>

#include <string>

namespace ostrell {
namespace {

JsonOwner Json(const std::string& text) {
  return JsonOwner(json_loads(text.c_str(), 0, nullptr));
}

// The names of the records found, in their order; "refused" for none.
std::string Found(const std::string& descriptor) {
  const JsonOwner records = Json(R"([
      {"name": "a", "ts": 10, "fid": 1}, {"name": "b", "ts": 30, "fid": -2147483647},
      {"name": "c", "ts": 20, "fid": 0}, {"name": "d", "ts": 30, "fid": 5},
      {"name": "e", "ts": 20},           {"name": "f", "ts": "20", "fid": 1.0},
      {"name": "g", "fid": 9223372036854775807}])");
  const JsonOwner found = EvaluateRecordQuery(records.Get(), Json(descriptor).Get());
  std::string names;
  size_t i = 0;
  json_t* record = nullptr;
  json_array_foreach(found.Get(), i, record) {
    names += json_string_value(json_object_get(record, "name"));
  }
  return found ? names : "refused";
}

std::string FoundBy(const std::string& conditions) {
  return Found(R"({"c": [)" + conditions + R"(], "o": [{"n": "ts", "t": "DESC"}]})");
}

TEST(RecordQueryTest, Conditions) {
  const struct {
    const char* conditions;
    const char* names;
  } kCases[] = {
      {"", "bdceafg"},
      {R"({"c": "><", "n": "ts", "v": {"l": 10, "r": 20}})", "cea"},
      {R"({"c": "><", "n": "ts", "v": {"l": 11, "r": 29}})", "ce"},
      {R"({"c": "><", "n": "ts", "v": {"l": 20, "r": 10}})", ""},
      {R"({"c": "in", "n": "fid", "v": [1, 5, 7]})", "da"},
      {R"({"c": "in", "n": "fid", "v": []})", ""},
      {R"({"c": "<", "n": "fid", "v": 0})", "b"},
      {R"({"c": "=", "n": "fid", "v": 0})", "c"},
      {R"({"c": ">", "n": "fid", "v": 1})", "dg"},
      {R"({"c": "=", "n": "missing", "v": 0})", ""},
      {R"({"c": "><", "n": "ts", "v": {"l": 10, "r": 30}}, {"c": "in", "n": "fid", "v": [0, 1]})",
       "ca"},
  };
  for (const auto& [conditions, names] : kCases) {
    EXPECT_EQ(FoundBy(conditions), names) << conditions;
  }
  EXPECT_EQ(Found(R"({"c": [], "o": [{"n": "ts", "t": "ASC"}]})"), "acebdfg");
}

TEST(RecordQueryTest, RefusesConditions) {
  for (const char* conditions : {
           "1",
           "{}",
           R"({"c": "=", "n": "fid"})",
           R"({"c": "=", "v": 0})",
           R"({"c": "!=", "n": "fid", "v": 0})",
           R"({"c": "=", "n": "fid", "v": "0"})",
           R"({"c": "<", "n": "fid", "v": 0.0})",
           R"({"c": "=", "n": "fid", "v": 0, "w": 0})",
           R"({"c": "in", "n": "fid", "v": 0})",
           R"({"c": "in", "n": "fid", "v": [0, "1"]})",
           R"({"c": "><", "n": "fid", "v": [0, 1]})",
           R"({"c": "><", "n": "fid", "v": {"l": 0}})",
           R"({"c": "><", "n": "fid", "v": {"l": 0, "r": 1, "x": 2}})",
           R"({"c": "<", "n": "fid", "v": 0}, {})",
       }) {
    EXPECT_EQ(FoundBy(conditions), "refused") << conditions;
  }
}

TEST(RecordQueryTest, RefusesDescriptors) {
  for (const char* descriptor : {
           "",
           "[]",
           "{}",
           R"({"c": []})",
           R"({"o": [{"n": "ts", "t": "DESC"}]})",
           R"({"c": [], "o": [{"n": "ts"}]})",
           R"({"c": [], "o": [{"n": "ts", "t": "desc"}]})",
           R"({"c": [], "o": [{"n": "ts", "t": "DESC", "x": 1}]})",
           R"({"c": [], "o": [{"n": "ts", "t": "DESC"}, {"n": "id", "t": "ASC"}]})",
           R"({"c": [], "o": [{"n": "ts", "t": "DESC"}], "x": 1})",
       }) {
    EXPECT_EQ(Found(descriptor), "refused") << descriptor;
  }
}

TEST(RecordQueryTest, ChangingAFoundRecordLeavesTheStore) {
  const JsonOwner records = Json(R"([{"ts": 1, "detail": {"rid": "x"}}])");
  const JsonOwner before = Json(R"([{"ts": 1, "detail": {"rid": "x"}}])");
  const JsonOwner found = EvaluateRecordQuery(
      records.Get(), Json(R"({"c": [], "o": [{"n": "ts", "t": "ASC"}]})").Get());
  json_t* record = json_array_get(found.Get(), 0);
  ASSERT_EQ(json_object_clear(json_object_get(record, "detail")), 0);
  ASSERT_EQ(json_object_clear(record), 0);
  EXPECT_TRUE(json_equal(records.Get(), before.Get()));
}

}  // namespace
}  // namespace ostrell
