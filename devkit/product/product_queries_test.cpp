#include <string>
#include <utility>

#include "devkit/product/event_condition.h"
#include "devkit/product/record_query_evaluation.h"
#include "tests/support/expect_recorded.h"

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
  ExpectRecorded("event_condition",
                 [](const std::string& xpath, const RecordedCase&) { return Selected(xpath); });
}

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
  for (json_t* record : Elements(found.Get())) {
    names += TextMember(record, "name").value_or("?");
    json_object_clear(record);
  }
  return !found ? "refused" : names.empty() ? "none" : names;
}

TEST(RecordQueryTest, RecordedCases) {
  ExpectRecorded("record_query", [](const std::string& descriptor, const RecordedCase&) {
    return Found(descriptor);
  });
}

}  // namespace
}  // namespace ostrell
