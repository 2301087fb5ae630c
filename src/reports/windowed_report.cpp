#include "reports/windowed_report.h"

#include <utility>

#include "base/run_job.h"
#include "env/client_identity.h"
#include "transport/report_url.h"
#include "transport/upload_json.h"

namespace ostrell {

void RunWindowedReport(const Settings& settings, int64_t now, const ReportTime& report,
                       const std::function<int32_t(int64_t from)>& send) {
  RunJob([&] {
    const ReportWindow window = ReadReportWindow(settings, report.key, now);
    if (IsDue(report, window, now) && send(window.start) == 1) {
      WriteLastReportTime(settings, report.key, now);
    }
  });
}

int32_t SendRecords(std::string_view urlTemplate, JsonOwner records) {
  if (json_array_size(records.Get()) == 0) {
    return 0;
  }
  const auto url = ReportUrl<kLogReportUrlSize>::Print(urlTemplate, ReportServerBaseUrl(),
                                                       MachineIdentity().CStr(), ClientId().CStr());
  return UploadJson(url.CStr(), std::move(records)).value_or(0);
}

}  // namespace ostrell
