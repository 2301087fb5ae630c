#pragma once

#include <cstdint>
#include <string_view>

#include "base/json.h"
#include "env/run.h"

namespace ostrell {

// rc3, the sample reports: whole files that the server does not have yet, each asked about by its
// SHA-1 first. Three jobs with a last-report time each; the time of the run is recorded for each
// whose function returns 1. Each covers a window of at most seven days and is due when that is
// longer than four hours.
//
// `instructions` is the server's answer to rc1, null when there was none.
void SampleReports(const Run& run, const json_t* instructions);

// The files of the records that the user submitted in [from, now], and then the programs of network
// records. 0 when the user submitted none: then there is no second pass either.
int32_t SampleJob(const Run& run, int64_t from);

// Files that may be false positives of the virus detection. 0 when there is no detection record.
int32_t FalsePositiveJob(const Run& run, int64_t from);

// Sends one file, `path` in UTF-8, without hindering anybody else: what others do to it after it
// was read changes nothing. Returns 1 when it was sent, is known to the server, has not the size of
// a sample, or is a shell link; 0 when it is no file on a disk, cannot be opened, read as a whole,
// asked about or sent, is too large for the memory, or when its path has 512 UTF-16 units or more.
int32_t SubmitSampleFile(const Run& run, std::string_view path);

}  // namespace ostrell
