#include "unified/event_logs.h"

#include <gtest/gtest.h>

#include "tests/support/fake_run.h"

// Whole collections are recorded cases of tests/jobs.

namespace ostrell {
namespace {

// The limit of one channel is none of the other's.
TEST(EventLogs, WithoutEnd) {
  FakeRun fake;
  FakeEventLog& log = fake.events;
  const auto collect = [&] { return collect_event_logs(fake.Get(), FakeRun::kNow - 604800); };
  fake.facts.isModern = false;
  const std::vector<FakeEventLog::ClassicRecord> crashes(
      256, {L"Application Error", 1000, 1795162530, L"velmora"});
  log.classic[L"Application"] = {FakeEventLog::ClassicRead{crashes}};
  log.classic[L"System"] = {{{{L"Service Control Manager", 7000, 1795162530, L"velmora"}}}};
  log.endless = L"Application";
  EXPECT_EQ(json_array_size(collect().Get()), 65537u);
  EXPECT_EQ(fake.messages.front(),
            "collect_event_logs Limit of channel Application: reading ended after 65536 events");

  fake.messages.clear();
  fake.eventLog.clock = SecondByLook();
  log.endless = L"System";
  EXPECT_EQ(json_array_size(collect().Get()), 256u + 299u);
  EXPECT_EQ(fake.messages.front(),
            "collect_event_logs Limit of channel System: reading ended after 299 events and 300 "
            "seconds");

  fake.messages.clear();
  fake.facts.isModern = true;
  fake.eventLog.clock = [] { return std::chrono::steady_clock::time_point(); };
  log.channels.assign(65537, L"Other");
  EXPECT_FALSE(collect());
  EXPECT_EQ(fake.messages.front(),
            "collect_event_logs Limit of channel Application: not among the first 65536 channels");
}

}  // namespace
}  // namespace ostrell
