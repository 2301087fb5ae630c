#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "env/run.h"

namespace ostrell {

// The product's features by number; each name is a section of its settings. Only this program's own
// row is kept here.
struct AppId {
  uint32_t id;
  const char* name;
};
inline constexpr std::array<AppId, 1> kAppIdTable = {{{26, "ostrell"}}};
inline constexpr uint32_t kOwnAppId = 26;

// The name of feature `id`; "QXAPP" when the table has none.
const char* FeatureName(std::span<const AppId> table, uint32_t id);

// True unless the settings hold an explicit 0 under "isReport". Without a store reporting is on.
bool IsReport(const Settings& settings);

// All report jobs in their fixed order, each regardless of the others' results. The server's answer
// to rc1 goes on to the sample reports.
void RunReports(const Run& run);

// One run over this machine. Nothing runs when Winsock does not start or when the settings switch
// reporting off. Windows only.
void RunReportDriver();

}  // namespace ostrell
