#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "env/run.h"

namespace ostrell {

// rc2, the detection log report: the product's detection records since the last report, of at most
// seven days, when that lies at least four hours back. The time of the run is recorded only after a
// successful upload; without any record nothing is sent.
void DetectionLogJob(const Run& run);

// Sends the records of [from, to], in seconds since 1970. Returns 1 when they were uploaded, else
// 0.
int32_t SendDetectionReport(const Run& run, int64_t from, int64_t to);

// The body with the records of [from, to]: those of the reported kinds and those that the user
// submitted, as KeepDetectionRecords (detection_records.h) makes it. Nothing when there is none.
std::optional<std::string> CollectDetectionRecords(const Run& run, int64_t from, int64_t to);

}  // namespace ostrell
