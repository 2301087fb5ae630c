#pragma once

#include <cstdint>

#include "base/json.h"
#include "env/run.h"
#include "unified/client_id_provider.h"

namespace ostrell {

// rc7, the unified report: dumps, log lines and events since the last one, at most of the last
// seven days, as one JSON array. All times are seconds since 1970.
//
// Old dumps are cleaned up at every call, also when no report is due. True when the report was
// taken by the server; only then the time of the run is recorded, so that a later run covers the
// period of a report that failed. False when none was due, when there was nothing to report, or on
// failure.
bool post_unified_report(const Run& run, IClientIdProvider& provider);

// Sets the eleven client fields on every element of `array` that is an object, in place of members
// of the same name. Does nothing to an empty array.
void add_common_fields_to_unified_array(const Run& run, json_t* array, IClientIdProvider& provider,
                                        int64_t secondsSinceLastReport);

}  // namespace ostrell
