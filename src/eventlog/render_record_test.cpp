#include "eventlog/render_record.h"

#include <stdexcept>

#include "base/print.h"
#include "base/text.h"
#include "tests/support/expect_recorded.h"

namespace eventlog {
namespace {

// The fields that are set, in a fixed order.
std::string Text(const EventRecord& record) {
  const ostrell::SystemTime& time = record.timeCreated;
  EXPECT_EQ(time.milliseconds + time.dayOfWeek, 0);
  const std::string date = ostrell::Print("%d-%d-%d %d:%d:%d", time.year, time.month, time.day,
                                          time.hour, time.minute, time.second);
  const std::pair<const char*, std::string> fields[] = {
      {"id", std::to_string(record.eventId)},
      {"level", std::to_string(record.level)},
      {"provider", ostrell::Utf8FromWide(record.provider)},
      {"process", std::to_string(record.processId)},
      {"thread", std::to_string(record.threadId)},
      {"computer", ostrell::Utf8FromWide(record.computer)},
      {"time", date == "0-0-0 0:0:0" ? "" : date}};
  std::string text;
  for (const auto& [name, value] : fields) {
    if (!value.empty() && value != "0") {
      text += (text.empty() ? "" : ", ") + std::string(name) + " " + value;
    }
  }
  return text;
}

TEST(EventRecordFromXml, RecordedCases) {
  ostrell::ExpectRecorded("event_record", [](const std::string& input, const auto&) -> std::string {
    const std::wstring xml = ostrell::WideFromUtf8(input).value();
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
  });
}

}  // namespace
}  // namespace eventlog
