#include "eventlog/classic_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/print.h"
#include "tests/support/expect_recorded.h"
#include "tests/support/fake_event_log.h"

namespace eventlog {
namespace {

using ostrell::FakeEventLog;
using testing::ElementsAre;

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

FakeEventLog::ClassicRead Records(std::initializer_list<uint32_t> ids) {
  FakeEventLog::ClassicRead read;
  for (const uint32_t id : ids) {
    read.records.push_back({.eventId = id});
  }
  return read;
}

struct Reading {
  std::vector<uint32_t> ids{};
  std::wstring error{};
  ReadingEnd end{};
};

Reading ReadAll(const std::wstring& server = L"", bool isOpen = true, size_t maxTaken = 100000) {
  LegacyEventLogReader reader(server, isOpen, FakeEventLog::Classic());
  Reading reading;
  reading.end = reader.ReadEvents(L"Log", EventIdFilter(1, 99), TimeBudget(ostrell::SecondByLook()),
                                  [&](const EventRecord& record) {
                                    reading.ids.push_back(record.eventId);
                                    return reading.ids.size() < maxTaken;
                                  });
  reading.error = reader.LastError();
  return reading;
}

TEST(ClassicReader, KeepsTheOrderAndFilters) {
  FakeEventLog log;
  log.classic[L"Log"] = {Records({9, 100, 8}), Records({7})};
  const Reading reading = ReadAll();
  EXPECT_THAT(reading.ids, ElementsAre(9, 8, 7));
  EXPECT_EQ(reading.error, L"");
  EXPECT_EQ(log.server, L"(none)");
}

TEST(ClassicReader, LogWithoutEnd) {
  FakeEventLog log;
  log.classic[L"Log"] = {Records({9, 8})};
  log.endless = L"Log";
  const Reading reading = ReadAll();
  EXPECT_EQ(reading.end, ReadingEnd::kOutOfTime);
  EXPECT_EQ(reading.ids.size(), 2u * 299);  // one look before each read and one when it began

  log.bufferSizes.clear();
  const Reading stopped = ReadAll(L"", true, 3);
  EXPECT_THAT(stopped.ids, ElementsAre(9, 8, 9));
  EXPECT_EQ(stopped.end, ReadingEnd::kStopped);
  EXPECT_EQ(log.bufferSizes.size(), 2u);
}

TEST(ClassicReader, EndsAndFailures) {
  FakeEventLog log;
  log.classic[L"Log"] = {Records({5}), {}, Records({6})};
  EXPECT_THAT(ReadAll().ids, ElementsAre(5));  // nothing read is the end

  log.classic[L"Log"] = {Records({5}), {.error = 87}};
  const Reading broken = ReadAll(L"server");
  EXPECT_THAT(broken.ids, ElementsAre(5));
  EXPECT_EQ(broken.error, L"error 87");
  EXPECT_EQ(log.server, L"server");

  log.failing = "OpenEventLog";
  EXPECT_EQ(ReadAll().error, L"error 2");
  EXPECT_EQ(ReadAll(L"", false).error, L"error 6");
}

TEST(ClassicReader, BufferGrowsOnDemandOnly) {
  FakeEventLog log;
  log.classic[L"Log"] = {
      {.error = 122, .needed = 70000}, Records({5}), {.error = 122, .needed = 0x80000}};
  const Reading reading = ReadAll();
  EXPECT_THAT(reading.ids, ElementsAre(5));
  EXPECT_THAT(log.bufferSizes, ElementsAre(65536, 70000, 70000));
  EXPECT_EQ(reading.error, L"error 122");  // more than the system documents

  log.classic[L"Log"] = {{.error = 122, .needed = 65536}};  // would be asked for ever
  EXPECT_EQ(ReadAll().error, L"error 122");
}

}  // namespace
}  // namespace eventlog
