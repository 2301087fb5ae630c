#pragma once

#include <chrono>
#include <cstdint>

#include "eventlog/reading.h"
#include "reports/sample_pass.h"
#include "store/record_store.h"
#include "transport/http.h"

namespace ostrell {

// How long a run may take. Each job is bounded by the time-outs of its transfers and the budgets of
// its loops; but a file on a dead share, a lock that nobody breaks, a damaged disk or a closed
// library can hold a call for ever, and with it the mutex that keeps every later run away. So the
// process ends itself, with exit code 0, when the limit has passed, whatever it is doing. Nothing
// is lost by it: what was not recorded as sent is sent by a later run.
inline constexpr std::chrono::seconds kRunLimit{14400};

namespace longest_run {

// The longest run in which no call hangs, in seconds, by its jobs.
inline constexpr int64_t kUpload = kAnswerLimits.total + kUploadLimits.total;  // ticket, PUT
inline constexpr int64_t kMachineInformation = kAnswerLimits.total;
inline constexpr int64_t kDetectionLog = kUpload;
// Check, journal and schema each wait for a busy database; check and all else each work.
inline constexpr int64_t kPopupLog =
    (int64_t{3} * kBusyTimeoutMilliseconds + 2 * kMaxWorkMilliseconds) / 1000 + kUpload;
// Submitted files, programs of network records, false positives, quarantine: the last file of each
// begins with a question when its time is all but up.
inline constexpr int64_t kSamples = 4 * (kSampleTimeBudget + kAnswerLimits.total + kUpload);
inline constexpr int64_t kStatistics = kUpload;
inline constexpr int64_t kUnified = 2 * eventlog::kReadingTime.count() + kUpload;
inline constexpr int64_t kSum =
    kMachineInformation + kDetectionLog + kPopupLog + kSamples + kStatistics + kUnified;

}  // namespace longest_run

static_assert(longest_run::kSum < kRunLimit.count(), "the limit cuts no run that goes on");

// Ends the process when `limit`, below 2^32 milliseconds, has passed from now on. Where no thread
// can be made the run goes on without a limit.
void LimitRun(std::chrono::milliseconds limit);

}  // namespace ostrell
