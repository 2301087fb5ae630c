#include <winsock2.h>

#include "app/report_driver.h"
#include "app/report_gate.h"
#include "env/client_id_provider.h"
#include "env/report_clock.h"
#include "platform/policydb.h"
#include "reports/machine_information.h"
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

  MachineInformationJob(settings, now, serverInstructions);
  // The other jobs' places, in this order: detection log, pop-up block log, samples (which take the
  // server's instructions), scan statistics.
  DefaultClientIdProvider provider;
  post_unified_report(settings, now, provider);

  WSACleanup();
}

}  // namespace ostrell
