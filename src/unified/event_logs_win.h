#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "eventlog/classic_api.h"
#include "eventlog/evt_api.h"
#include "eventlog/reading.h"
#include "machine/system_facts_win.h"

namespace ostrell {

inline constexpr size_t kMostEventsOfQuery = 65536;

// What an item is made of. The text of the event is not kept.
struct CollectedEvent {
  int64_t time;  // seconds since 1970; 0 when the event's own time is no date
  uint32_t eventId;
  std::wstring provider;
  std::wstring channel;
  std::wstring applicationName;       // of event 1000 only
  std::wstring applicationTimestamp;  // hexadecimal, of event 1000 only
};

// True on Windows Vista and later; false when the version cannot be found.
bool HasModernEventLog(const SystemApi& api);

// Appends the product's events to `events` and returns how many there are in all. `clock` is the
// one of each query's time.
size_t QueryProductEvents(
    bool isModern, int64_t tmStart, std::vector<CollectedEvent>& events,
    const eventlog::EvtApi& modern = eventlog::LoadedEvtApi(),
    const eventlog::ClassicEventLogApi& classic = eventlog::SystemClassicEventLog(),
    const eventlog::TimeBudget::Clock& clock = &std::chrono::steady_clock::now);

}  // namespace ostrell
