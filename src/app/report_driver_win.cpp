#include <winsock2.h>

#include "app/report_driver.h"
#include "app/report_gate.h"
#include "base/run_job.h"
#include "env/report_clock.h"
#include "platform/policydb.h"
#include "reports/detection_log.h"
#include "reports/machine_information.h"
#include "reports/popup_block_log.h"
#include "reports/samples.h"
#include "reports/scan_statistics.h"
#include "unified/client_id_provider.h"
#include "unified/unified_report.h"

namespace ostrell {

void RunReportDriver() {
  const Settings settings(OpenSettingsStore(FeatureName(kAppIdTable, kOwnAppId)));
  WSADATA winsock;
  if (WSAStartup(MAKEWORD(2, 2), &winsock) != 0) {
    return;
  }
  if (!IsReport(settings)) {
    return;  // Winsock stays up: the process ends right after
  }

  // One instant for the whole run: every job measures and records with it.
  const int64_t now = ReportClock();
  JsonOwner serverInstructions;

  RunJob(MachineInformationJob, settings, now, serverInstructions);
  RunJob(DetectionLogJob, settings, now);
  RunJob(PopupBlockJob, settings, now);
  RunJob(SampleReports, settings, now, serverInstructions.Get());
  RunJob(ScanStatsJob, settings, now);
  DefaultClientIdProvider provider;
  RunJob(post_unified_report, settings, now, provider);

  WSACleanup();
}

}  // namespace ostrell
