#include "eventlog/render_record.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "base/print.h"
#include "base/text.h"
#include "tests/support/expect_recorded.h"

namespace eventlog {
namespace {

// The fields that are set, in a fixed order.
std::string Text(const EventRecord& record) {
  std::string text;
  const auto add = [&text](const char* name, const std::string& value) {
    if (!value.empty() && value != "0") {
      text += (text.empty() ? "" : ", ") + std::string(name) + " " + value;
    }
  };
  add("id", std::to_string(record.eventId));
  add("level", std::to_string(record.level));
  add("provider", ostrell::Utf8FromWide(record.provider));
  add("process", std::to_string(record.processId));
  add("thread", std::to_string(record.threadId));
  add("computer", ostrell::Utf8FromWide(record.computer));
  const ostrell::SystemTime& time = record.timeCreated;
  const std::string date = ostrell::Print("%d-%d-%d %d:%d:%d", time.year, time.month, time.day,
                                          time.hour, time.minute, time.second);
  add("time", date == "0-0-0 0:0:0" ? "" : date);
  EXPECT_EQ(time.milliseconds + time.dayOfWeek, 0);
  return text;
}

std::string Outcome(std::wstring_view xml) {
  EventRecord record;
  try {
    const bool isRecord = EventRecordFromXml(xml, record);
    EXPECT_EQ(record.data, xml);
    return isRecord ? Text(record) : "no record";
  } catch (const std::invalid_argument&) {
    return "no number";
  } catch (const std::out_of_range&) {
    return "out of range";
  }
}

TEST(EventRecordFromXml, RecordedCases) {
  ostrell::ExpectRecorded("event_record", [](const std::string& input, const auto&) {
    return Outcome(ostrell::WideFromUtf8(input).value());
  });
}

}  // namespace
}  // namespace eventlog
