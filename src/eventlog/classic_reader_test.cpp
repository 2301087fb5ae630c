#include "eventlog/classic_reader.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/event_reading.h"
#include "tests/support/expect_recorded.h"

namespace eventlog {
namespace {

using ostrell::EventReading;
using ostrell::FakeEventLog;
using ostrell::RecordedCase;

std::string Text(const EventRecord& record) {
  const ostrell::SystemTime& time = record.timeCreated;
  return ostrell::Print("%u %u %u %04d-%02d-%02d %02d:%02d:%02d ", record.recordNumber,
                        record.eventId, record.level, time.year, time.month, time.day, time.hour,
                        time.minute, time.second) +
         ostrell::Utf8FromWide(record.channel + L"|" + record.provider + L"|" + record.computer +
                               L"|" + record.data);
}

TEST(ClassicRecords, RecordedCases) {
  ostrell::ExpectRecorded("classic_records", [](const std::string& input, const auto&) {
    std::vector<EventRecord> records;
    WalkClassicRecords(std::as_bytes(std::span(input)), L"Log", CompositeFilter(), records);
    std::string texts;
    for (const EventRecord& record : records) {
      texts += (texts.empty() ? "" : "\n") + Text(record);
    }
    return texts;
  });
}

// "error 122 needs 70000", or ids.
FakeEventLog::ClassicRead ReadOf(const std::string& text) {
  FakeEventLog::ClassicRead read;
  if (std::sscanf(text.c_str(), "error %u needs %u", &read.error, &read.needed) == 0) {
    std::istringstream ids(text);
    for (uint32_t id = 0; ids >> id;) {
      read.records.push_back({.eventId = id});
    }
  }
  return read;
}

// A case says what each read of the log gives; of the outcome: records that the filter lets pass,
// end, last error.
TEST(ClassicReader, RecordedCases) {
  for (const RecordedCase& recorded : ostrell::CasesOf("classic_reading")) {
    SCOPED_TRACE(recorded.Name());
    EventReading reading(recorded, L"Log");
    for (const std::string& read : recorded.All("read")) {
      reading.log.classic[L"Log"].push_back(ReadOf(read));
    }
    LegacyEventLogReader reader(reading.Server(), !recorded.Has("closed"), FakeEventLog::Classic());
    const auto outcome = reading.Outcome(reader, [&](const auto& budget, const auto& take) {
      return reader.ReadEvents(L"Log", EventIdFilter(1, 99), budget, take);
    });
    EXPECT_EQ(outcome, recorded["expect"]);
    EXPECT_EQ(ostrell::Utf8FromWide(reading.log.server), reading.Field("opened on"));
    std::string buffers;
    for (const uint32_t size : reading.log.bufferSizes) {
      buffers += (buffers.empty() ? "" : " ") + std::to_string(size);
    }
    EXPECT_TRUE(buffers == reading.Field("buffers") || recorded.Has("clock")) << buffers;
  }
}

}  // namespace
}  // namespace eventlog
