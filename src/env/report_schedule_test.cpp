#include "env/report_schedule.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>

#include "tests/support/fake_settings_store.h"

namespace ostrell {
namespace {

constexpr int64_t kNow = 1700000000;
constexpr int64_t kSmallest = std::numeric_limits<int64_t>::min();
constexpr int64_t kLargest = std::numeric_limits<int64_t>::max();

struct Row {
  const char* key;
  ReportTime report;
  int64_t dueAge;  // of the last report, in seconds: the first age that is due; 0: any age is
};
constexpr Row kMachineInformation{"rpttm_ui", kMachineInformationTime, 0};
constexpr Row kDetectionLog{"rpttm_li", kDetectionLogTime, 14400};
constexpr Row kSamples{"rpttm_sf", kSampleTime, 14401};
constexpr Row kScanStatistics{"rpttm_cc", kScanStatisticsTime, 1296000};
constexpr Row kRows[] = {kMachineInformation,
                         kDetectionLog,
                         {"rpttm_li_tools", kPopupBlockLogTime, 14400},
                         kSamples,
                         {"rpttm_fp", kFalsePositiveTime, 14401},
                         {"rpttm_qf", kQuarantineTime, 14401},
                         kScanStatistics,
                         {"rpttm_localinfo", kUnifiedReportTime, 14400}};

bool IsDueAt(const Row& row, int64_t last, int64_t now) {
  FakeSettingsStore store;
  store.times[row.key] = last;
  return IsDue(row.report, ReadReportWindow(store.Hold(), row.report.key, now), now);
}

TEST(ReportScheduleTest, EachReportIsDueFromItsOwnAgeOn) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.key);
    for (const int64_t age : {row.dueAge, row.dueAge + 1, int64_t{1296000}, kNow}) {
      EXPECT_TRUE(IsDueAt(row, kNow - age, kNow)) << age;
    }
    for (const int64_t age : {row.dueAge - 1, int64_t{0}, int64_t{-1}, int64_t{-1296000}, -kNow}) {
      EXPECT_EQ(IsDueAt(row, kNow - age, kNow), row.dueAge == 0) << age;
    }
    // A clock that failed makes all that have an age wait.
    EXPECT_EQ(IsDueAt(row, kNow, -1), row.dueAge == 0);
    EXPECT_EQ(IsDueAt(row, 0, -1), row.dueAge == 0);
  }
}

TEST(ReportScheduleTest, UnifiedReportTakesItsIntervalFromTheSetting) {
  ReportTime report = kUnifiedReportTime;
  report.interval = std::numeric_limits<uint32_t>::max();
  EXPECT_TRUE(IsDue(report, {5000000000 - 4294967295, 0}, 5000000000));
  EXPECT_FALSE(IsDue(report, {5000000000 - 4294967294, 0}, 5000000000));
}

TEST(ReportScheduleTest, EveryReportIsDueWithoutStoreOrValue) {
  FakeSettingsStore store;
  const Settings empty = store.Hold();
  const Settings none;
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.key);
    for (const Settings* settings : {&empty, &none}) {
      const ReportWindow window = ReadReportWindow(*settings, row.report.key, kNow);
      EXPECT_EQ(window.last, 0);
      EXPECT_EQ(window.start, 1699395200);
      EXPECT_TRUE(IsDue(row.report, window, kNow));
    }
  }
}

// Values worked out by hand in 64-bit two's complement.
TEST(ReportScheduleTest, ExtremeTimesWrap) {
  // The look-back of the smallest number wraps to a large one, later than any stored time.
  EXPECT_EQ(ReadReportWindow(Settings(), L"rpttm_li", kSmallest).start, 9223372036854171008);
  EXPECT_TRUE(IsDueAt(kDetectionLog, 0, kSmallest));
  // The window begins at the look-back; a difference that measures from the last time wraps.
  EXPECT_TRUE(IsDueAt(kDetectionLog, kSmallest, kNow));
  EXPECT_FALSE(IsDueAt(kScanStatistics, kSmallest, kNow));
  EXPECT_TRUE(IsDueAt(kScanStatistics, kSmallest, -1));
  EXPECT_TRUE(IsDueAt(kScanStatistics, kLargest, kSmallest + 1295999));
  EXPECT_FALSE(IsDueAt(kScanStatistics, kLargest, kSmallest + 1295998));
  EXPECT_FALSE(IsDueAt(kSamples, kLargest, kNow));
  EXPECT_TRUE(IsDueAt(kMachineInformation, kLargest, kNow));
}

TEST(ReportScheduleTest, MachineInformationTimeAdvancesAfterMoreThanADay) {
  EXPECT_TRUE(AdvancesMachineInformationTime(86401));
  for (const int64_t gap : {int64_t{86400}, int64_t{0}, int64_t{-1}, kSmallest}) {
    EXPECT_FALSE(AdvancesMachineInformationTime(gap)) << gap;
  }
}

TEST(ReportScheduleTest, WindowBeginsAtTheLaterOfLookBackAndLastReport) {
  const struct {
    int64_t last;
    int64_t start;
    size_t readings;
  } cases[] = {{0, 1699395200, 1},          {1699395199, 1699395200, 1},
               {1699395200, 1699395200, 2}, {1699395201, 1699395201, 2},
               {kNow + 5, kNow + 5, 2},     {kLargest, kLargest, 2},
               {kSmallest, 1699395200, 1}};
  for (const auto& [last, start, readings] : cases) {
    SCOPED_TRACE(last);
    FakeSettingsStore store;
    store.times["rpttm_fp"] = last;
    const ReportWindow window = ReadReportWindow(store.Hold(), L"rpttm_fp", kNow);
    EXPECT_EQ(window.last, last);
    EXPECT_EQ(window.start, start);
    EXPECT_EQ(store.readKeys, std::vector<std::string>(readings, "rpttm_fp"));
  }
}

TEST(ReportScheduleTest, SecondReadingGivesTheStart) {
  // A store whose values change after the first reading.
  struct ChangingStore : FakeSettingsStore {
    std::map<std::string, int64_t> later;
    int32_t ReadInt64(const char* key, int64_t* value) override {
      const int32_t found = FakeSettingsStore::ReadInt64(key, value);
      times = later;
      return found;
    }
  } store;
  for (const int64_t second : {kNow - 100, int64_t{0}}) {
    store.times = {{"rpttm_li", kNow - 20000}};
    store.later.clear();
    if (second != 0) {
      store.later["rpttm_li"] = second;
    }
    const ReportWindow window = ReadReportWindow(store.Hold(), L"rpttm_li", kNow);
    EXPECT_EQ(window.last, kNow - 20000);
    EXPECT_EQ(window.start, second);
    EXPECT_EQ(IsDue(kDetectionLogTime, window, kNow), second == 0);
    EXPECT_TRUE(IsDue(kUnifiedReportTime, window, kNow));
  }
}

TEST(ReportScheduleTest, TimesAreKeptUnderTheKeysOfTheStore) {
  FakeSettingsStore store;
  store.writeResult = 0;  // of no account
  const Settings settings = store.Hold();
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.key);
    store.numbers[row.key] = 5;  // of another width: no time
    EXPECT_EQ(ReadLastReportTime(settings, row.report.key), 0);
    WriteLastReportTime(settings, row.report.key, kNow);
    EXPECT_EQ(store.written.back(), std::pair(std::string(row.key), kNow));
    EXPECT_EQ(ReadLastReportTime(settings, row.report.key), kNow);
  }
}

}  // namespace
}  // namespace ostrell
