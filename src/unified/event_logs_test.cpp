#include "unified/event_logs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fake_event_log.h"
#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

using testing::ElementsAre;

constexpr int64_t kStart = FakeRun::kNow - 604800;
constexpr auto kManager = "Service Control Manager";
constexpr auto kWideManager = L"Service Control Manager";

const std::string kCrash = R"({"report_type":"syslog","name":"Application Error",)"
                           R"("timestamp":1795162530,"pattern":1000)";
const std::string kManagers = R"({"report_type":"syslog","name":"Service Control Manager",)"
                              R"("timestamp":1795162530,)";
const std::string kFailed = kManagers + R"("pattern":7000)";

// Created 2026-11-20 08:15:30 UTC, which is 1795162530.
RecordedEventText Crash(const std::string& data) {
  return {.provider = "Application Error", .id = "1000", .data = data};
}

RecordedEventText Failed(const char* time = "2026-11-20T08:15:30Z") {
  return {.provider = kManager, .id = "7000", .data = "<Data>protsvc</Data>", .time = time};
}

class EventLogsTest : public testing::Test {
 protected:
  EventLogsTest() {
    fake.eventLog.modern = FakeEventLog::Modern;
    fake.eventLog.classic = FakeEventLog::Classic;
  }

  void Record(const wchar_t* channel, const std::vector<RecordedEventText>& events) {
    for (const RecordedEventText& event : events) {
      log.modern[channel] += event.Text();
    }
  }
  JsonOwner Collect() { return collect_event_logs(fake.Get(), kStart); }

  FakeRun fake;
  FakeEventLog log;
};

TEST_F(EventLogsTest, ItemsOfBothChannels) {
  const std::string path = "<Data Name='AppPath'>C:\\VELMORA\\a.exe</Data>";
  Record(
      L"Application",
      {Crash("<Data Name='AppName'>a.exe</Data><Data Name='AppTimeStamp'>c4d265b0</Data>" + path),
       Crash("<Data Name='AppName'>other.exe</Data><Data Name='AppTimeStamp'>1</Data>"),
       Crash("<Data Name='AppName'>b.exe</Data>" + path),
       Crash("<Data>ProtSvc.exe</Data><Data>6.0</Data><Data>64d1b2c3</Data>"),
       {.provider = "Other", .id = "1000", .data = path},
       {.provider = "Application Error", .id = "1001", .data = path}});
  Record(L"System",
         {{.provider = kManager, .id = "7000", .data = "<Data Name='param1'>PROTSVC</Data>"},
          {.provider = kManager, .id = "7001", .data = "<Data Name='param1'>PROTSVC</Data>"},
          {.provider = kManager, .id = "7009", .data = "<Data Name='param2'>Velmora</Data>"},
          {.provider = kManager,
           .id = "7009",
           .data = "<Data Name='param2'>Velmora</Data>",
           .time = "2026-11-10T00:00:00Z"}});
  // Without named elements the words of the XML text itself are taken.
  EXPECT_EQ(CompactText(Collect()),
            "[" + kCrash + R"(,"eventdata":"a.exe","exe-time":3302122928},)" + kCrash +
                R"(,"eventdata":"b.exe"},)" + kCrash + R"(,"eventdata":"<Event","exe-time":0},)" +
                kFailed + "}," + kManagers + R"("pattern":7009}])");
  EXPECT_THAT(fake.messages,
              ElementsAre("collect_event_logs Event log collection completed, found 5 matching "
                          "events within time range",
                          "collect_event_logs All events converted to JSON, 5 entries total"));
}

TEST_F(EventLogsTest, NumberThatDoesNotConvertCostsItsChannel) {
  const std::string name = "<Data Name='AppName'>velmora.exe</Data>";
  RecordedEventText damaged = Crash(name);
  damaged.level = "two";
  Record(L"Application", {Crash(name), damaged});
  Record(L"System", {Failed()});
  EXPECT_EQ(CompactText(Collect()), "[" + kFailed + "}]");
}

TEST_F(EventLogsTest, NothingKept) {
  EXPECT_FALSE(Collect());  // no channels
  EXPECT_THAT(fake.messages,
              ElementsAre("collect_event_logs Event log collection completed, found 0 matching "
                          "events within time range",
                          "collect_event_logs No events to collect, return NULL"));
}

// Both ends of the period belong to it; its end is the time of the collection, not of the run.
TEST_F(EventLogsTest, PeriodEndsWithTheClock) {
  fake.clock.now = 1795162530;
  Record(L"System", {Failed("2026-11-20T08:15:30Z"), Failed("2026-11-20T08:15:31Z"),
                     Failed("2026-11-18T00:12:00Z"), Failed("2026-11-18T00:11:59Z")});
  EXPECT_EQ(json_array_size(Collect().Get()), 2u);
  fake.facts.isModern = false;
  log.classic[L"System"] = {{{{kWideManager, 7000, 1795162530, L"protsvc"},
                              {kWideManager, 7000, 1795162531, L"protsvc"},
                              {kWideManager, 7000, 1794960720, L"protsvc"},
                              {kWideManager, 7000, 1794960719, L"protsvc"}}}};
  EXPECT_EQ(json_array_size(Collect().Get()), 2u);
}

TEST_F(EventLogsTest, ClassicInterfaceWhereThereIsNoOther) {
  fake.facts.isModern = false;
  Record(L"System", {Failed()});
  log.classic[L"Application"] = {
      {{{L"application ERROR", 1000, 1795162530, L"velmora.exe 1 64d1b2c3"},
        {L"Application", 1000, 1795162530, L"velmora.exe 1 2"},
        {L"Application Error", 1001, 1795162530, L"velmora.exe 1 2"},
        {L"Application Error", 1000, 1795162530, L"other.exe 1 2"}}}};
  log.classic[L"System"] = {{{{kWideManager, 7009, 1795162530, L"protsvc"}}}};
  EXPECT_EQ(CompactText(Collect()),
            R"([{"report_type":"syslog","name":"application ERROR","timestamp":1795162530,)"
            R"("pattern":1000,"eventdata":"velmora.exe","exe-time":1691464387},)"
            R"({"report_type":"syslog","name":"Service Control Manager","timestamp":1795162530,)"
            R"("pattern":7009}])");
  EXPECT_TRUE(log.queries.empty());
}

// The limit of one channel is none of the other's.
TEST_F(EventLogsTest, LogsWithoutEnd) {
  fake.facts.isModern = false;
  const std::vector<FakeEventLog::ClassicRecord> crashes(
      256, {L"Application Error", 1000, 1795162530, L"velmora"});
  log.classic[L"Application"] = {FakeEventLog::ClassicRead{crashes}};
  log.classic[L"System"] = {{{{kWideManager, 7000, 1795162530, L"velmora"}}}};
  log.endless = L"Application";
  EXPECT_EQ(json_array_size(Collect().Get()), 65537u);
  EXPECT_EQ(fake.messages.front(),
            "collect_event_logs Limit of channel Application: reading ended after 65536 events");

  fake.messages.clear();
  fake.eventLog.clock = SecondByLook();
  log.endless = L"System";
  EXPECT_EQ(json_array_size(Collect().Get()), 256u + 299u);
  EXPECT_EQ(fake.messages.front(),
            "collect_event_logs Limit of channel System: reading ended after 299 events and 300 "
            "seconds");

  fake.messages.clear();
  fake.facts.isModern = true;
  fake.eventLog.clock = [] { return std::chrono::steady_clock::time_point(); };
  log.channels.assign(65537, L"Other");
  EXPECT_FALSE(Collect());
  EXPECT_EQ(fake.messages.front(),
            "collect_event_logs Limit of channel Application: not among the first 65536 channels");
}

}  // namespace
}  // namespace ostrell
