#include <winsock2.h>

#include "app/report_driver.h"
#include "base/files_win.h"
#include "base/registry_win.h"
#include "env/client_identity.h"
#include "eventlog/apis.h"
#include "machine/system_facts_win.h"
#include "platform/closed_library.h"
#include "transport/report_url.h"

namespace ostrell {

void RunReportDriver() {
  const PolicyDb policydb(LoadPolicyDb());
  const Settings settings(policydb.OpenSettingsStore(FeatureName(kAppIdTable, kOwnAppId)));
  WSADATA winsock;
  if (WSAStartup(MAKEWORD(2, 2), &winsock) != 0) {
    return;
  }
  if (!IsReport(settings)) {
    return;  // Winsock stays up: the process ends right after
  }

  const Svclink svclink(LoadSvclink());
  const TraceLog traceLog(LoadTraceLog());
  const WindowsFiles files;
  const WindowsRegistry registry;
  const WindowsFacts system;
  const eventlog::EventLogApis eventLog{.modern = eventlog::LoadedEvtApi,
                                        .classic = eventlog::SystemClassicEventLog,
                                        .clock = &std::chrono::steady_clock::now};
  RunReports({.settings = settings,
              .now = ReportClock(),
              .baseUrl = ReportServerBaseUrl(),
              .machineIdentity = MachineIdentity().CStr(),
              .clientId = ClientId().CStr(),
              .paths = GetProductPaths(),
              .policydb = policydb,
              .svclink = svclink,
              .traceLog = traceLog,
              .files = files,
              .registry = registry,
              .system = system,
              .clock = SystemClock(),
              .eventLog = eventLog});

  WSACleanup();
}

}  // namespace ostrell
