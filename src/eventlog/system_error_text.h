#pragma once

#include <cstdint>
#include <string>

namespace eventlog {

// What the system says of an error code, with the line break at its end, or "Unknown error (code:
// N)" when it knows none. Windows only.
std::wstring SystemErrorText(uint32_t code);

}  // namespace eventlog
