#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "env/settings.h"

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

}  // namespace ostrell
