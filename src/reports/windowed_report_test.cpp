#include "reports/windowed_report.h"

#include <gtest/gtest.h>

#include <new>

#include "tests/support/fake_run.h"

namespace ostrell {
namespace {

constexpr int64_t kNow = FakeRun::kNow;
constexpr int64_t kWeekAgo = 1794960720;
constexpr int64_t kNotDue = -1;

// The start of the window that is sent; kNotDue when none is. `result` is what the sending gives.
int64_t StartOf(FakeRun& run, const ReportTime& report, int32_t result) {
  int64_t start = kNotDue;
  RunWindowedReport(run.Get(), report, [&](int64_t from) {
    start = from;
    return result;
  });
  return start;
}

class WindowedReport : public testing::TestWithParam<ReportTime> {
 protected:
  const std::string key{GetParam().key.begin(), GetParam().key.end()};
  const bool isLog = key.starts_with("rpttm_li");
  FakeRun run;
};
INSTANTIATE_TEST_SUITE_P(All, WindowedReport,
                         testing::Values(kDetectionLogTime, kPopupBlockLogTime, kSampleTime,
                                         kFalsePositiveTime, kQuarantineTime));

TEST_P(WindowedReport, SendsWhatIsDueAndRecordsOnlySuccess) {
  const struct {
    int64_t age;    // of the last report in seconds
    int64_t start;  // of the window
  } cases[] = {{604801, kWeekAgo},
               {604799, kWeekAgo + 1},
               {14401, kNow - 14401},
               // Exactly four hours after the last one only the logs are due.
               {14400, isLog ? kNow - 14400 : kNotDue},
               {14399, kNotDue},
               {-604800, kNotDue}};
  for (const auto& [age, start] : cases) {
    for (const int32_t result : {0, 1}) {
      run.store.times[key] = kNow - age;
      EXPECT_EQ(StartOf(run, GetParam(), result), start) << age;
      EXPECT_EQ(run.store.times[key], start != kNotDue && result == 1 ? kNow : kNow - age) << age;
    }
  }
}

TEST_P(WindowedReport, WithoutStoreEveryRunSendsAndWithoutClockNone) {
  run.store.times[key] = kNow;
  run.now = -1;
  EXPECT_EQ(StartOf(run, GetParam(), 1), kNotDue);
  run.now = kNow;
  run.settings = Settings();
  EXPECT_EQ(StartOf(run, GetParam(), 1), kWeekAgo);
}

TEST(RunWindowedReport, WhatThrowsHasFailed) {
  FakeRun run;
  RunWindowedReport(run.Get(), kSampleTime, [](int64_t) -> int32_t { throw std::bad_alloc(); });
  EXPECT_TRUE(run.store.written.empty());
}

TEST(SendRecords, TextThatIsNotUtf8IsNoSuccess) {
  EXPECT_EQ(SendRecords({}, JsonOwner(json_pack("[o]", json_string_nocheck("\xFF")))), 0);
}

}  // namespace
}  // namespace ostrell
