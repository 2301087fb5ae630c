#pragma once

#include <cstdint>

namespace ostrell {

struct Run;

// The installation's numeric customer id: "id" of policy document 25, else the current user's
// registry value "cid" (HKCU "SOFTWARE\Velmora\Corvane", REG_DWORD); 0 when both are missing or
// negative. When the document holds an id of at least 0, the registry value is deleted. An
// "id" past 32 bits counts with its low 32.
uint32_t ReadCustomerId(const Run& run);

}  // namespace ostrell
