#pragma once

#include <cstdint>
#include <string>

#include "base/registry.h"

namespace ostrell {

// The program's two settings under HKLM "SOFTWARE\Velmora\Corvane\Ostrell", read at every call.

// "ReportLink" as UTF-8: the base URL of the reports that take theirs from the client id provider.
// REG_SZ or REG_EXPAND_SZ (not expanded) of at most 1040 bytes. Empty when it is missing, of
// another type, longer, of odd length, or not zero-terminated.
std::string ReadReportLink(const Registry& registry);

// "MinReportInterval" (REG_DWORD) in seconds, unbounded above. 14400 when it is missing, of another
// type, or 0.
uint32_t ReadMinReportInterval(const Registry& registry);

}  // namespace ostrell
