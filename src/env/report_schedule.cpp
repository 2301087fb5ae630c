#include "env/report_schedule.h"

#include "base/calendar.h"

namespace ostrell {

int64_t ReadLastReportTime(const Settings& settings, std::wstring_view key) {
  return settings.ReadInt64(key).value_or(0);
}

void WriteLastReportTime(const Settings& settings, std::wstring_view key, int64_t time) {
  settings.WriteInt64(key, time);
}

ReportWindow ReadReportWindow(const Settings& settings, std::wstring_view key, int64_t now) {
  const int64_t last = ReadLastReportTime(settings, key);
  const int64_t lookBack = WrappingDifference(now, kLookBack);
  // The start is a reading of its own, taken when it is needed.
  return {last, lookBack > last ? lookBack : ReadLastReportTime(settings, key)};
}

bool IsDue(const ReportTime& report, const ReportWindow& window, int64_t now) {
  const int64_t sinceStart = WrappingDifference(now, window.start);
  switch (report.test) {
    case DueTest::kSinceStart:
      return sinceStart >= report.interval;
    case DueTest::kPastStart:
      return sinceStart > report.interval;
    case DueTest::kSinceLast:
      return WrappingDifference(now, window.last) >= report.interval;
    case DueTest::kAlways:
      break;
  }
  return true;
}

}  // namespace ostrell
