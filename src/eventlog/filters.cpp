#include "eventlog/filters.h"

#include <algorithm>

namespace eventlog {

bool TimeRangeFilter::Matches(const EventRecord& record) const {
  const uint64_t ticks = ostrell::TicksFromSystemTime(record.timeCreated).value_or(0);
  return (!hasFrom || ticks >= from) && (!hasTo || ticks <= to);
}

bool EventIdFilter::Matches(const EventRecord& record) const {
  if (useList) {
    return std::ranges::find(ids, record.eventId) != ids.end();
  }
  return record.eventId >= minId && (maxId == 0 || record.eventId <= maxId);
}

bool LevelFilter::Matches(const EventRecord& record) const {
  return record.level != 0 && std::ranges::find(levels, record.level) != levels.end();
}

bool CustomFilter::Matches(const EventRecord& record) const {
  return predicate(record);
}

bool CompositeFilter::Matches(const EventRecord& record) const {
  return std::ranges::all_of(children,
                             [&record](const auto& child) { return child->Matches(record); });
}

}  // namespace eventlog
