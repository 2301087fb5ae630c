#include "eventlog/session.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/fake_event_log.h"

namespace eventlog {
namespace {

using ostrell::FakeEventLog;

struct Reading {
  std::vector<EventRecord> records;
  ReadingEnd end;
  std::wstring error;
};

class SessionTest : public testing::Test {
 protected:
  // Events of "System" with ids from 1 on.
  static void Record(FakeEventLog& log, int count, const std::string& level = "2") {
    for (int id = 1; id <= count; ++id) {
      log.modern[L"System"] +=
          ostrell::RecordedEventText{.provider = "P", .id = std::to_string(id), .level = level}
              .Text();
    }
  }

  Reading Query(const std::wstring& server = L"", const std::wstring& provider = L"P") {
    EventLogSession session(server, FakeEventLog::Modern());
    Reading reading;
    reading.end = session.QueryEvents(L"System", provider, filter, TimeBudget(clock),
                                      [&](EventRecord record) {
                                        reading.records.push_back(std::move(record));
                                        return reading.records.size() < maxTaken;
                                      });
    reading.error = session.LastError();
    return reading;
  }

  FakeEventLog log;
  CompositeFilter filter;
  TimeBudget::Clock clock = [] { return std::chrono::steady_clock::time_point(); };
  size_t maxTaken = 1000000;
};

TEST_F(SessionTest, RecordsInTheOrderOfTheService) {
  Record(log, 150);
  log.unrendered = L">8<";
  filter.Add(std::make_unique<CustomFilter>(
      [](const EventRecord& record) { return record.eventId % 2 == 0; }));
  const auto [records, end, error] = Query();
  ASSERT_EQ(records.size(), 74u);
  EXPECT_EQ(records[0].eventId, 2u);
  EXPECT_EQ(records[3].eventId, 10u);
  EXPECT_EQ(records[73].eventId, 150u);
  EXPECT_EQ(records[0].channel, L"System");
  EXPECT_EQ(log.largestBatch, 64u);
  EXPECT_EQ(error, L"");
  EXPECT_NE(log.queries.at(0).find("*[System[(Provider/@Name='P')]]"), std::string::npos);
}

TEST_F(SessionTest, FailureAtAnyCall) {
  const struct {
    const char* call;
    const wchar_t* error;
    size_t records;
  } cases[] = {
      {"", L"", 70},         {"EvtOpenSession", L"error 6", 0}, {"EvtQuery", L"error 5", 0},
      {"EvtNext", L"", 64},  // at the second batch
      {"EvtRender", L"", 0}, {"EvtOpenChannelEnum", L"", 0}};
  Record(log, 70);
  for (const auto& c : cases) {
    log.failing = c.call;
    const Reading reading = Query(L"server");
    EXPECT_EQ(reading.records.size(), c.records) << c.call;
    EXPECT_EQ(reading.error, c.error) << c.call;
    EXPECT_EQ(log.open, 0) << c.call;
  }
  log.failing = "";
  EXPECT_EQ(Query(L"", std::wstring(4000, L'p')).error, L"error 122");
  EXPECT_EQ(log.queries.size(), 4u);  // the one that does not fit is not run
}

TEST_F(SessionTest, ThrowClosesEveryHandle) {
  Record(log, 69);
  Record(log, 1, "none");
  EXPECT_THROW(Query(L"server"), std::invalid_argument);
  EXPECT_EQ(log.opened, 73);  // session, channels, results, 70 events
}

TEST_F(SessionTest, ChannelsAreKnownByTheirExactNames) {
  Record(log, 1);
  log.channels = {L"system", L"Systems"};
  EXPECT_TRUE(Query().records.empty());
  EXPECT_EQ(Query().error, L"");
  log.channels = {L"A", std::wstring(260, L'x'), L"System"};  // the long one ends the list
  EXPECT_TRUE(Query().records.empty());
  log.channels = {std::wstring(259, L'x'), L"System"};
  EXPECT_EQ(Query().records.size(), 1u);
}

TEST_F(SessionTest, ReadingEndsByTimeTakerOrEmptyBatch) {
  Record(log, 1);
  log.succeedsAtEnd = true;
  EXPECT_EQ(Query().records.size(), 1u);

  log.endless = L"System";
  maxTaken = 100;
  const Reading stopped = Query();
  EXPECT_EQ(stopped.records.size(), 100u);
  EXPECT_EQ(stopped.end, ReadingEnd::kStopped);

  maxTaken = 1000000;
  clock = ostrell::SecondByLook();
  const auto [records, end, error] = Query();
  // A look when the reading begins, one at the only channel, 298 before a batch each.
  EXPECT_EQ(records.size(), 64u * 298);
  EXPECT_EQ(end, ReadingEnd::kOutOfTime);
  EXPECT_EQ(error, L"");
}

TEST_F(SessionTest, ListOfChannelsEnds) {
  Record(log, 1);
  log.channels.assign(65535, L"Other");
  log.channels.emplace_back(L"System");
  EXPECT_EQ(Query().records.size(), 1u);
  log.channels.insert(log.channels.begin(), L"Other");
  const Reading late = Query();
  EXPECT_TRUE(late.records.empty());
  EXPECT_EQ(late.end, ReadingEnd::kTooManyChannels);
  log.channels.pop_back();
  EXPECT_EQ(Query().end, ReadingEnd::kComplete);
  clock = ostrell::SecondByLook();
  EXPECT_EQ(Query().end, ReadingEnd::kOutOfTime);
}

TEST_F(SessionTest, RenderingOfAnotherSize) {
  Record(log, 1);
  const size_t whole = Query().records.at(0).data.size();
  log.rendersLess = true;
  EXPECT_EQ(Query().records.at(0).data.size(), whole / 2);
  log.rendersLess = false;
  log.announced = (16u << 20) + 1;
  EXPECT_TRUE(Query().records.empty());
}

}  // namespace
}  // namespace eventlog
