#include "env/report_schedule.h"

#include <algorithm>
#include <limits>
#include <sstream>

#include "base/print.h"
#include "tests/support/expect_recorded.h"
#include "tests/support/fake_settings_store.h"

namespace ostrell {
namespace {

constexpr int64_t kNow = 1700000000;
constexpr ReportTime kReports[] = {
    kMachineInformationTime, kDetectionLogTime, kPopupBlockLogTime,  kSampleTime,
    kFalsePositiveTime,      kQuarantineTime,   kScanStatisticsTime, kUnifiedReportTime};

// Of the last time and now.
TEST(ReportDue, RecordedCases) {
  EXPECT_EQ(CasesOf("report_due").size(), std::size(kReports));
  ExpectRecorded("report_due", [](const std::string& times, const RecordedCase& recorded) {
    const std::string& key = recorded["key"];
    const auto* const report = std::ranges::find(kReports, std::wstring(key.begin(), key.end()),
                                                 [](const auto& row) { return row.key; });
    FakeSettingsStore store;
    int64_t now = 0;
    std::istringstream(times) >> store.times[key] >> now;
    return IsDue(*report, ReadReportWindow(store.Hold(), report->key, now), now) ? "due" : "waits";
  });
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
  ExpectRecorded("report_window", [](const std::string& readings, const RecordedCase&) {
    ChangingStore store;
    std::istringstream(readings) >> store.times["rpttm_fp"] >> store.second;
    const ReportWindow window = ReadReportWindow(store.Hold(), L"rpttm_fp", kNow);
    std::string outcome = Print("%lld %lld", window.last, window.start);
    for (const std::string& key : store.readKeys) {
      outcome += " " + key;
    }
    return outcome;
  });
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
