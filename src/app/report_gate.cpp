#include "app/report_gate.h"

#include <algorithm>

namespace ostrell {

const char* FeatureName(std::span<const AppId> table, uint32_t id) {
  const auto row = std::ranges::find(table, id, &AppId::id);
  return row != table.end() ? row->name : "QXAPP";
}

bool IsReport(const Settings& settings) {
  return settings.ReadInt32(L"isReport").value_or(1) != 0;
}

}  // namespace ostrell
