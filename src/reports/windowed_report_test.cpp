#include "reports/windowed_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

constexpr int64_t kNow = FakeRun::kNow;
constexpr int64_t kWeekAgo = 1794960720;

const ReportTime kReports[] = {kDetectionLogTime, kPopupBlockLogTime, kSampleTime,
                               kFalsePositiveTime, kQuarantineTime};

TEST(RunWindowedReport, SendsWhatIsDueAndRecordsOnlySuccess) {
  const struct {
    int64_t age;    // of the last report in seconds
    int64_t start;  // of the window; 0: not due
  } cases[] = {{2592000, kWeekAgo},
               {604801, kWeekAgo},
               {604800, kWeekAgo},
               {604799, kWeekAgo + 1},
               {14401, kNow - 14401},
               {14399, 0},
               {10800, 0},
               {0, 0},
               {-1, 0},
               {-604800, 0}};
  for (const ReportTime& report : kReports) {
    const std::string key(report.key.begin(), report.key.end());
    for (const auto& [age, start] : cases) {
      for (const int32_t result : {1, 0}) {
        FakeRun fake;
        fake.store.times[key] = kNow - age;
        std::vector<int64_t> starts;
        RunWindowedReport(fake.Get(), report, [&](int64_t from) {
          starts.push_back(from);
          return result;
        });
        SCOPED_TRACE(key + " " + std::to_string(age));
        const bool isDue = start != 0;
        EXPECT_EQ(starts, std::vector<int64_t>(isDue ? 1 : 0, start));
        EXPECT_EQ(fake.store.times[key], isDue && result == 1 ? kNow : kNow - age);
      }
    }
  }
}

// Exactly four hours after the last one only the logs are due.
TEST(RunWindowedReport, FourHours) {
  for (const ReportTime& report : kReports) {
    FakeRun fake;
    fake.store.times[std::string(report.key.begin(), report.key.end())] = kNow - 14400;
    bool isSent = false;
    RunWindowedReport(fake.Get(), report, [&](int64_t) {
      isSent = true;
      return 1;
    });
    EXPECT_EQ(isSent, report.key.starts_with(L"rpttm_li"));
  }
}

TEST(RunWindowedReport, WithoutStoreEveryRunSendsAndWithoutClockNone) {
  for (const ReportTime& report : kReports) {
    int64_t start = 0;
    const auto send = [&](int64_t from) {
      start = from;
      return 1;
    };
    FakeRun fake;
    fake.store.times[std::string(report.key.begin(), report.key.end())] = kNow;
    fake.now = -1;
    RunWindowedReport(fake.Get(), report, send);
    EXPECT_EQ(start, 0);
    fake.now = kNow;
    fake.settings = Settings();
    RunWindowedReport(fake.Get(), report, send);
    EXPECT_EQ(start, kWeekAgo);
    EXPECT_THAT(fake.store.written, testing::IsEmpty());
  }
}

TEST(RunWindowedReport, WhatThrowsHasFailedAndStopsNoOther) {
  FakeRun fake;
  for (const ReportTime& report : kReports) {
    RunWindowedReport(fake.Get(), report, [](int64_t) -> int32_t { throw std::bad_alloc(); });
  }
  EXPECT_THAT(fake.store.written, testing::IsEmpty());
}

TEST(SendRecords, NothingToSendIsNoSuccess) {
  EXPECT_EQ(SendRecords({}, {}), 0);
  EXPECT_EQ(SendRecords({}, JsonOwner(json_array())), 0);
  EXPECT_EQ(SendRecords({}, JsonOwner(json_pack("[o]", json_string_nocheck("\xFF")))), 0);
}

}  // namespace
}  // namespace ostrell
