#pragma once

#include <cstdint>

#include "base/json.h"

namespace ostrell {

// Application crashes and failed service starts of the Windows event log that name the product,
// created between `tmStart` (seconds since 1970) and now, as an array of items: nothing when there
// are none. Events carry times of local_time_win.h's rule.
//
// Two queries are run, each over one channel and one provider. One that fails contributes nothing,
// and neither does one whose results hold a number that cannot be converted; the other is still
// run.
JsonOwner collect_event_logs(int64_t tmStart);

}  // namespace ostrell
