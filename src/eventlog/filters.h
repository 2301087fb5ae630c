#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "base/calendar.h"
#include "eventlog/event_record.h"

namespace eventlog {

// What narrows a query. A filter tests one record; some can also be put into the query's text, so
// that the event log service evaluates them (select_xpath.h). Filters do not change once made.
class EventFilter {
 public:
  virtual ~EventFilter() = default;
  virtual bool Matches(const EventRecord& record) const = 0;
};

// Bounds are in ticks of 100 ns since 1601 UTC and belong to the range. A record whose time is no
// date counts as of tick 0.
class TimeRangeFilter : public EventFilter {
 public:
  // Both bounds, in seconds since 1970.
  TimeRangeFilter(int64_t fromSeconds, int64_t toSeconds)
      : TimeRangeFilter(true, true, ostrell::TicksFromSeconds(fromSeconds),
                        ostrell::TicksFromSeconds(toSeconds)) {}
  TimeRangeFilter(bool fromIsSet, bool toIsSet, uint64_t fromTicks, uint64_t toTicks)
      : hasFrom(fromIsSet), hasTo(toIsSet), from(fromTicks), to(toTicks) {}
  bool Matches(const EventRecord& record) const override;

  const bool hasFrom;
  const bool hasTo;
  const uint64_t from;
  const uint64_t to;
};

// Either a list of ids, of which an empty one lets nothing pass, or a range.
class EventIdFilter : public EventFilter {
 public:
  explicit EventIdFilter(std::vector<uint32_t> list) : ids(std::move(list)), useList(true) {}
  EventIdFilter(uint32_t least, uint32_t most) : minId(least), maxId(most) {}
  bool Matches(const EventRecord& record) const override;

  const uint32_t minId = 0;  // 0: no lower bound
  const uint32_t maxId = 0;  // 0: no upper bound
  const std::vector<uint32_t> ids;
  const bool useList = false;
};

// Zeros in the list are ignored.
class LevelFilter : public EventFilter {
 public:
  explicit LevelFilter(std::vector<uint32_t> list) : levels(std::move(list)) {}
  bool Matches(const EventRecord& record) const override;

  const std::vector<uint32_t> levels;
};

// A test of the caller's own; an empty one throws std::bad_function_call.
class CustomFilter : public EventFilter {
 public:
  explicit CustomFilter(std::function<bool(const EventRecord&)> test)
      : predicate(std::move(test)) {}
  bool Matches(const EventRecord& record) const override;

  const std::function<bool(const EventRecord&)> predicate;
};

// Lets pass what all its children let pass, in the order of adding; without children everything.
class CompositeFilter : public EventFilter {
 public:
  void Add(std::unique_ptr<EventFilter> child) { children.push_back(std::move(child)); }
  bool Matches(const EventRecord& record) const override;

  std::vector<std::unique_ptr<EventFilter>> children;
};

}  // namespace eventlog
