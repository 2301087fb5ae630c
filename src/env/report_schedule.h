#pragma once

#include <cstdint>
#include <string_view>

#include "env/settings.h"

namespace ostrell {

// When a report is due, and what is remembered of it. All times are seconds since 1970 UTC; `now`
// is the one value that the run took from ReportClock, -1 when the clock failed. Differences wrap
// in two's complement: a stored time can be any number.

enum class DueTest {
  kAlways,      // sent on every run
  kSinceStart,  // now - start of the window >= interval
  kPastStart,   // now - start of the window > interval
  kSinceLast,   // now - last report >= interval
};

// One row for each last-report time of the settings store.
struct ReportTime {
  std::wstring_view key;
  DueTest test;
  int64_t interval;  // seconds
};

inline constexpr int64_t kLookBack = 604800;              // seven days
inline constexpr int64_t kDefaultReportInterval = 14400;  // four hours

inline constexpr ReportTime kMachineInformationTime{L"rpttm_ui", DueTest::kAlways, 0};
inline constexpr ReportTime kDetectionLogTime{L"rpttm_li", DueTest::kSinceStart, 14400};
inline constexpr ReportTime kPopupBlockLogTime{L"rpttm_li_tools", DueTest::kSinceStart, 14400};
inline constexpr ReportTime kSampleTime{L"rpttm_sf", DueTest::kPastStart, 14400};
inline constexpr ReportTime kFalsePositiveTime{L"rpttm_fp", DueTest::kPastStart, 14400};
inline constexpr ReportTime kQuarantineTime{L"rpttm_qf", DueTest::kPastStart, 14400};
inline constexpr ReportTime kScanStatisticsTime{L"rpttm_cc", DueTest::kSinceLast, 1296000};
// The interval of this one is a setting: "MinReportInterval".
inline constexpr ReportTime kUnifiedReportTime{L"rpttm_localinfo", DueTest::kSinceLast,
                                               kDefaultReportInterval};

// The machine information report is sent on every run, but its time advances once a day. `gap` is
// the time since the recorded one; negative when that lies in the future.
constexpr bool AdvancesMachineInformationTime(int64_t gap) {
  return gap >= 86401;
}

// The last report's time; 0 when there is no store or no such value.
int64_t ReadLastReportTime(const Settings& settings, std::wstring_view key);

// Does nothing without a store.
void WriteLastReportTime(const Settings& settings, std::wstring_view key, int64_t time);

// The period that a windowed report covers ends at `now` and never starts before the look-back.
struct ReportWindow {
  int64_t last;
  int64_t start;
};
ReportWindow ReadReportWindow(const Settings& settings, std::wstring_view key, int64_t now);

bool IsDue(const ReportTime& report, const ReportWindow& window, int64_t now);

}  // namespace ostrell
