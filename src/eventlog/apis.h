#pragma once

#include "eventlog/classic_api.h"
#include "eventlog/evt_api.h"
#include "eventlog/reading.h"

namespace eventlog {

// Where a reader finds the event log's functions and its clock. Either interface is looked for when
// it is first used.
struct EventLogApis {
  const EvtApi& (*modern)();
  const ClassicEventLogApi& (*classic)();
  TimeBudget::Clock clock;
};

}  // namespace eventlog
