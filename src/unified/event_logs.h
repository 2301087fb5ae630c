#pragma once

#include <cstdint>

#include "base/json.h"
#include "env/run.h"

namespace ostrell {

inline constexpr size_t kMaxEventsOfQuery = 65536;

// Application crashes and failed service starts of the Windows event log that name the product,
// created between `tmStart` (seconds since 1970) and now (of the run's clock), as an array of
// items: nothing when there are none. Their times are those of
// LocalTimeSeconds (collector.h).
//
// Two queries are run, each over one channel and one provider. One that fails contributes nothing,
// and neither does one whose results hold a number that cannot be converted; the other is still
// run. A query ends when it has given 65,536 events, when its time of 300 seconds is spent, or when
// its channel is not among the first 65,536 that the event log service lists (eventlog/reading.h):
// what it has given until then counts, and the trace log says so.
JsonOwner collect_event_logs(const Run& run, int64_t tmStart);

}  // namespace ostrell
