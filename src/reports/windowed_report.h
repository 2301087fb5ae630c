#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "env/report_schedule.h"
#include "env/run.h"
#include "transport/report_url.h"

namespace ostrell {

// The shape of the reports that cover a window of time: rc2, rc5 and the three of rc3.

// Runs `send` with the start of the window where the report is due, and records the time of the run
// when it returns 1 and there is a store. What `send` throws is a failure like any other. Times are
// those of report_schedule.h. Without a store a window of seven days is sent on every run.
void RunWindowedReport(const Run& run, const ReportTime& report,
                       const std::function<int32_t(int64_t from)>& send);

// Uploads the body that `collect` gives. Returns 1 on success; 0 also when there is none, or memory
// was short meanwhile and a record may lack parts.
int32_t SendRecords(const ReportUrl<kLogReportUrlSize>& url,
                    const std::function<std::optional<std::string>()>& collect);

// Where the reports of a run go and from whom they come.
ReportOrigin OriginOf(const Run& run);

}  // namespace ostrell
