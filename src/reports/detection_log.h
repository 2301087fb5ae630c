#pragma once

#include <cstdint>

#include "env/settings.h"

namespace ostrell {

// rc2, the detection log report: the product's detection records since the last report, of at most
// seven days, when that lies at least four hours back. `now` is recorded only after a successful
// upload; without any record nothing is sent.
void DetectionLogJob(const Settings& settings, int64_t now);

// Sends the records of [from, to], in seconds since 1970. Returns 1 when they were uploaded, else
// 0.
int32_t SendDetectionReport(int64_t from, int64_t to);

}  // namespace ostrell
