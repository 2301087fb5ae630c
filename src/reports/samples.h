#pragma once

#include <cstdint>

#include "base/json.h"
#include "env/settings.h"

namespace ostrell {

// rc3, the sample reports: whole files that the server does not have yet, each asked about by its
// SHA-1 first. Three jobs with a last-report time each; `now` is recorded for each whose function
// returns 1. Each covers a window of at most seven days and is due when that is longer than four
// hours.
//
// `instructions` is the server's answer to rc1, null when there was none.
void SampleReports(const Settings& settings, int64_t now, const json_t* instructions);

// The files of the records that the user submitted in [from, now], and then the programs of network
// records. 0 when the user submitted none: then there is no second pass either.
int32_t SampleJob(int64_t from, int64_t now);

// Files that may be false positives of the virus detection. 0 when there is no detection record.
int32_t FalsePositiveJob(int64_t from, int64_t now);

// Sends one file, `path` in UTF-8. Returns 1 when it was sent, is known to the server, has not the
// size of a sample, or is a shell link; 0 when it cannot be read, asked about or sent.
int32_t SubmitSampleFile(const char* path);

}  // namespace ostrell
