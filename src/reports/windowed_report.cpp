#include "reports/windowed_report.h"

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
                    const std::function<std::optional<std::string>()>& collect) {
  const JsonMemoryWatch memory;
  const auto body = collect();
  return body && !memory.WasRefused()
             ? UploadReport(url.CStr(), body->data(), static_cast<uint32_t>(body->size()))
             : 0;
}

ReportOrigin OriginOf(const Run& run) {
  return {.baseUrl = run.baseUrl, .machineIdentity = run.machineIdentity, .clientId = run.clientId};
}

}  // namespace ostrell
