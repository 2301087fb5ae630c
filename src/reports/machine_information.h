#pragma once

#include <cstdint>

#include "base/json.h"
#include "env/run.h"

namespace ostrell {

// rc1, the machine information report: one GET whose query describes machine and installation, on
// every run. The server's answer, a JSON document with status 200, is put into `answer`, which
// keeps what it held in every other case. Only after a success that lies at least 86401 seconds
// behind the last recorded one is the time of the run recorded.
//
// Nothing is sent when the install folder holds no valid version text.
void MachineInformationJob(const Run& run, JsonOwner& answer);

// Sends the report with the gap `r`, in seconds since the last recorded report. Returns 1 on
// success, else 0. `answer` may be null.
int32_t SendMachineInformation(const Run& run, int64_t gap, JsonOwner* answer);

}  // namespace ostrell
