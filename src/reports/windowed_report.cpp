#include "reports/windowed_report.h"

#include <utility>

#include "base/json_memory.h"
#include "base/run_job.h"
#include "transport/upload_report.h"

namespace ostrell {

void RunWindowedReport(const Run& run, const ReportTime& report,
                       const std::function<int32_t(int64_t from)>& send) {
  RunJob([&] {
    const ReportWindow window = ReadReportWindow(run.settings, report.key, run.now);
    if (IsDue(report, window, run.now) && send(window.start) == 1) {
      WriteLastReportTime(run.settings, report.key, run.now);
    }
  });
}

int32_t SendRecords(const ReportUrl<kLogReportUrlSize>& url,
                    const std::function<JsonOwner()>& collect) {
  const JsonMemoryWatch memory;
  JsonOwner records = collect();
  if (json_array_size(records.Get()) == 0) {
    return 0;
  }
  const auto body = MakeJsonBody(std::move(records));
  return body && !memory.WasRefused() ? UploadReport(url.CStr(), body->text.Get(), body->length)
                                      : 0;
}

ReportOrigin OriginOf(const Run& run) {
  return {.baseUrl = run.baseUrl, .machineIdentity = run.machineIdentity, .clientId = run.clientId};
}

}  // namespace ostrell
