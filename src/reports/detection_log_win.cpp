#include "reports/detection_log.h"
#include "reports/detection_records.h"
#include "reports/windowed_report.h"
#include "transport/report_url.h"

namespace ostrell {

void DetectionLogJob(const Settings& settings, int64_t now) {
  RunWindowedReport(settings, now, kDetectionLogTime,
                    [now](int64_t from) { return SendDetectionReport(from, now); });
}

int32_t SendDetectionReport(int64_t from, int64_t to) {
  return SendRecords(kDetectionLogUrl, CollectDetectionRecords(from, to));
}

}  // namespace ostrell
