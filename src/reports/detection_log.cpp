#include "reports/detection_log.h"

#include "reports/detection_kinds.h"
#include "reports/detection_records.h"
#include "reports/record_query.h"
#include "reports/windowed_report.h"

namespace ostrell {

void DetectionLogJob(const Run& run) {
  RunWindowedReport(run, kDetectionLogTime,
                    [&run](int64_t from) { return SendDetectionReport(run, from, run.now); });
}

int32_t SendDetectionReport(const Run& run, int64_t from, int64_t to) {
  return SendRecords(DetectionLogUrl(OriginOf(run)),
                     [&] { return CollectDetectionRecords(run, from, to); });
}

std::optional<std::string> CollectDetectionRecords(const Run& run, int64_t from, int64_t to) {
  const JsonOwner records =
      RunRecordQuery(run, [&] { return RecordsInRangeWithIds(from, to, kReportedKinds); });
  const JsonOwner submitted =
      RunRecordQuery(run, [&] { return RecordsInRangeWithNegativeId(from, to); });
  if (!records) {
    return KeepDetectionRecords(submitted);
  }
  json_array_extend(records.Get(), submitted.Get());
  return KeepDetectionRecords(records);
}

}  // namespace ostrell
