#include "env/report_schedule.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <sstream>

#include "tests/support/fake_settings_store.h"
#include "tests/support/recorded_cases.h"

namespace ostrell {
namespace {

constexpr int64_t kNow = 1700000000;
constexpr ReportTime kReports[] = {
    kMachineInformationTime, kDetectionLogTime, kPopupBlockLogTime,  kSampleTime,
    kFalsePositiveTime,      kQuarantineTime,   kScanStatisticsTime, kUnifiedReportTime};

TEST(ReportDue, RecordedCases) {
  const auto cases = CasesOf("report_due");
  EXPECT_EQ(cases.size(), std::size(kReports));
  for (const RecordedCase& recorded : cases) {
    const std::string& key = recorded["key"];
    const auto* const report = std::ranges::find(kReports, std::wstring(key.begin(), key.end()),
                                                 [](const auto& row) { return row.key; });
    ASSERT_NE(report, std::end(kReports)) << key;
    for (const bool isDue : {true, false}) {
      for (const std::string& times : recorded.All(isDue ? "due" : "waits")) {
        FakeSettingsStore store;
        int64_t now = 0;
        std::istringstream(times) >> store.times[key] >> now;
        const ReportWindow window = ReadReportWindow(store.Hold(), report->key, now);
        EXPECT_EQ(IsDue(*report, window, now), isDue) << key << ": " << times;
      }
    }
  }
}

TEST(ReportDue, SettingIsTheIntervalOfTheUnifiedReport) {
  EXPECT_FALSE(IsDue(kDetectionLogTime, {kNow - 20000, kNow - 100}, kNow));
  EXPECT_TRUE(IsDue(kUnifiedReportTime, {kNow - 20000, kNow - 100}, kNow));
  ReportTime report = kUnifiedReportTime;
  report.interval = std::numeric_limits<uint32_t>::max();
  EXPECT_TRUE(IsDue(report, {5000000000 - 4294967295, 0}, 5000000000));
  EXPECT_FALSE(IsDue(report, {5000000000 - 4294967294, 0}, 5000000000));
}

TEST(ReportDue, MachineInformationTimeAdvancesAfterMoreThanADay) {
  EXPECT_TRUE(AdvancesMachineInformationTime(86401));
  EXPECT_FALSE(AdvancesMachineInformationTime(86400));
  EXPECT_FALSE(AdvancesMachineInformationTime(std::numeric_limits<int64_t>::min()));
}

TEST(ReportWindow, RecordedCases) {
  // Its value may be another one at the second reading, which gives the start.
  struct ChangingStore : FakeSettingsStore {
    int64_t second = 0;
    int32_t ReadInt64(const char* key, int64_t* value) override {
      const int32_t found = FakeSettingsStore::ReadInt64(key, value);
      times[key] = second;
      return found;
    }
  };
  for (const std::string& row : CasesOf("report_window").front().All("window")) {
    ChangingStore store;
    int64_t start = 0;
    size_t readings = 0;
    std::istringstream(row) >> store.times["rpttm_fp"] >> store.second >> start >> readings;
    const int64_t last = store.times["rpttm_fp"];
    const ReportWindow window = ReadReportWindow(store.Hold(), L"rpttm_fp", kNow);
    EXPECT_EQ(window.last, last) << row;
    EXPECT_EQ(window.start, start) << row;
    EXPECT_EQ(store.readKeys, std::vector<std::string>(readings, "rpttm_fp")) << row;
  }
  // The look-back of the smallest number wraps to a large one, later than any stored time.
  EXPECT_EQ(ReadReportWindow({}, L"rpttm_li", std::numeric_limits<int64_t>::min()).start,
            9223372036854171008);
}

TEST(ReportTimes, AreOf64Bits) {
  FakeSettingsStore store;
  store.numbers["rpttm_li"] = 5;
  const Settings settings = store.Hold();
  EXPECT_EQ(ReadLastReportTime(settings, L"rpttm_li"), 0);
  WriteLastReportTime(settings, L"rpttm_li", kNow);
  EXPECT_EQ(store.times["rpttm_li"], kNow);
}

}  // namespace
}  // namespace ostrell
