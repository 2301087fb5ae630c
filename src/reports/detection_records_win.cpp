#include "reports/detection_kinds.h"
#include "reports/detection_records.h"
#include "unified/record_query.h"

namespace ostrell {

JsonOwner CollectDetectionRecords(int64_t from, int64_t to) {
  JsonOwner records = RunRecordQuery(RecordsInRangeWithIds(from, to, kReportedKinds).Get());
  JsonOwner submitted = RunRecordQuery(RecordsInRangeWithNegativeId(from, to).Get());
  if (!records) {
    records = std::move(submitted);
  }
  json_array_extend(records.Get(), submitted.Get());
  return KeepDetectionRecords(records);
}

}  // namespace ostrell
