#pragma once

#include <cstdint>

#include "base/json.h"
#include "platform/svclink.h"

namespace ostrell {

// GETs `url` through a stream of svclink, takes the packed record out of it and parses its JSON.
// `statusOut`, when given, receives the HTTP status once the transfer completed.
//
// Empty without svclink (no request goes out then), on a failed or cut transfer, for an answer of
// more than 4 MiB, and for one that is no packed record, no JSON, or JSON of more elements than
// bounded_json.h allows.
JsonOwner FetchPackedJson(const char* url, int32_t* statusOut, const Svclink& svclink);

}  // namespace ostrell
