#include "devkit/product/record_query_evaluation.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

JsonOwner Json(const std::string& text) {
  return JsonOwner(json_loads(text.c_str(), 0, nullptr));
}

// The names of the records found, in their order, "none", or "refused". What is found is emptied,
// which the records must survive.
std::string Found(const std::string& descriptor) {
  static const JsonOwner records = Json(R"([
      {"name": "a", "ts": 10, "fid": 1}, {"name": "b", "ts": 30, "fid": -2147483647},
      {"name": "c", "ts": 20, "fid": 0}, {"name": "d", "ts": 30, "fid": 5},
      {"name": "e", "ts": 20},           {"name": "f", "ts": "20", "fid": 1.0},
      {"name": "g", "fid": 9223372036854775807}])");
  const JsonOwner found = EvaluateRecordQuery(records.Get(), Json(descriptor).Get());
  std::string names;
  size_t i = 0;
  json_t* record = nullptr;
  json_array_foreach(found.Get(), i, record) {
    names += TextMember(record, "name").value_or("?");
    json_object_clear(record);
  }
  return !found ? "refused" : names.empty() ? "none" : names;
}

TEST(RecordQueryTest, RecordedCases) {
  const RecordedCase cases(OSTRELL_PRODUCT_CASES "/record_query.case");
  for (size_t i = 0; i < cases.All("descriptor").size(); ++i) {
    const std::string descriptor = cases.All("descriptor")[i];
    EXPECT_EQ(Found(descriptor), cases.All("finds").at(i)) << descriptor;
  }
}

}  // namespace
}  // namespace ostrell
