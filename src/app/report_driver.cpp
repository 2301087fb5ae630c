#include "app/report_driver.h"

#include <algorithm>

#include "base/run_job.h"
#include "reports/detection_log.h"
#include "reports/machine_information.h"
#include "reports/popup_block_log.h"
#include "reports/samples.h"
#include "reports/scan_statistics.h"
#include "unified/unified_report.h"

namespace ostrell {

const char* FeatureName(std::span<const AppId> table, uint32_t id) {
  const auto row = std::ranges::find(table, id, &AppId::id);
  return row != table.end() ? row->name : "QXAPP";
}

bool IsReport(const Settings& settings) {
  return settings.ReadInt32(L"isReport").value_or(1) != 0;
}

void RunReports(const Run& run) {
  JsonOwner serverInstructions;
  RunJob([&] { MachineInformationJob(run, serverInstructions); });
  RunJob([&] { DetectionLogJob(run); });
  RunJob([&] { PopupBlockJob(run); });
  RunJob([&] { SampleReports(run, serverInstructions.Get()); });
  RunJob([&] { ScanStatsJob(run); });
  DefaultClientIdProvider provider(run);
  RunJob([&] { post_unified_report(run, provider); });
}

}  // namespace ostrell
