#include "reports/detection_kinds.h"
#include "reports/detection_records.h"
#include "reports/record_query.h"

namespace ostrell {

JsonOwner CollectDetectionRecords(int64_t from, int64_t to) {
  const JsonOwner records = RunRecordQuery(RecordsInRangeWithIds(from, to, kReportedKinds).Get());
  const JsonOwner submitted = RunRecordQuery(RecordsInRangeWithNegativeId(from, to).Get());
  if (!records) {
    return KeepDetectionRecords(submitted);
  }
  json_array_extend(records.Get(), submitted.Get());
  return KeepDetectionRecords(records);
}

}  // namespace ostrell
