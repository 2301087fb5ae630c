#pragma once

#include <cstdint>
#include <string_view>

#include "base/json.h"

namespace ostrell {

// A new item of the unified report with the members that every item begins with, in their order:
// "report_type", "name" and "timestamp" (seconds since 1970). `name` is converted to UTF-8.
JsonOwner NewReportItem(const char* reportType, std::wstring_view name, int64_t timestamp);

}  // namespace ostrell
