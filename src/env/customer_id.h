#pragma once

#include <cstdint>

#include "base/json.h"
#include "base/registry.h"

namespace ostrell {

struct Run;

// The installation's numeric customer id: "id" of policy document 25, else the current user's
// registry value "cid" (HKCU "SOFTWARE\Velmora\Corvane", REG_DWORD); 0 when both are missing or
// negative. When the document holds an id of at least 0, the registry value is deleted.
uint32_t ReadCustomerId(const Run& run);

// The same for what the document holds, borrowed; null when there is no document. An "id" past 32
// bits counts with its low 32.
uint32_t CustomerIdFrom(json_t* document, const Registry& registry);

}  // namespace ostrell
