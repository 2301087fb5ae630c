#include "unified/event_logs.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <utility>

#include "base/calendar.h"
#include "base/text.h"
#include "eventlog/apis.h"
#include "eventlog/classic_reader.h"
#include "eventlog/filters.h"
#include "eventlog/session.h"
#include "unified/collector.h"
#include "unified/event_fields.h"

namespace ostrell {
namespace {

using eventlog::CompositeFilter;
using eventlog::EventRecord;
using eventlog::ReadingEnd;

constexpr auto kOperation = "collect_event_logs";
constexpr uint32_t kApplicationError = 1000;

// What an item is made of. The text of the event is not kept.
struct CollectedEvent {
  int64_t time;  // seconds since 1970; 0 when the event's own time is no date
  uint32_t eventId;
  std::wstring provider;
  std::wstring channel;
  std::wstring applicationName;       // of event 1000 only
  std::wstring applicationTimestamp;  // hexadecimal, of event 1000 only
};

struct EventQuery {
  const wchar_t* channel;
  const wchar_t* provider;
  std::vector<uint32_t> ids;
};

// In the order of the report.
const std::array<EventQuery, 2>& EventQueries() {
  static const std::array<EventQuery, 2> queries = {{
      {L"Application", L"Application Error", {kApplicationError}},
      {L"System", L"Service Control Manager", {7000, 7009}},
  }};
  return queries;
}

CompositeFilter FilterOf(const EventQuery& query, int64_t tmStart, int64_t tmEnd) {
  CompositeFilter filter;
  filter.Add(std::make_unique<eventlog::TimeRangeFilter>(tmStart, tmEnd));
  filter.Add(std::make_unique<eventlog::EventIdFilter>(query.ids));
  filter.Add(std::make_unique<eventlog::CustomFilter>(
      [](const EventRecord& record) { return NamesProduct(record.data); }));
  return filter;
}

int64_t TimeOf(const Run& run, const EventRecord& record) {
  const auto ticks = TicksFromSystemTime(record.timeCreated);
  return ticks ? LocalTimeSeconds(run.clock, *ticks) : 0;
}

CollectedEvent Collected(const Run& run, EventRecord&& record, const EventQuery& query) {
  ApplicationFields application;
  if (record.eventId == kApplicationError) {
    application = ExtractApplicationFields(record.data);
  }
  return {TimeOf(run, record),         record.eventId,
          std::move(record.provider),  query.channel,
          std::move(application.name), std::move(application.timestamp)};
}

// What limit ended the reading of a query, if one did.
void LogEnd(const Run& run, ReadingEnd end, const EventQuery& query, size_t count) {
  constexpr auto kSeconds = eventlog::kReadingTime.count();
  const TraceLogger log(run.traceLog, kOperation);
  if (end == ReadingEnd::kStopped) {
    log(L"Limit of channel %s: reading ended after %u events", query.channel, count);
  } else if (end == ReadingEnd::kOutOfTime) {
    log(L"Limit of channel %s: reading ended after %u events and %d seconds", query.channel, count,
        kSeconds);
  } else if (end == ReadingEnd::kTooManyChannels) {
    log(L"Limit of channel %s: not among the first %u channels", query.channel,
        eventlog::kMaxChannels);
  }
}

JsonOwner ItemOf(const CollectedEvent& event) {
  JsonOwner item = NewReportItem("syslog", event.provider, event.time);
  json_object_set_new(item.Get(), "pattern", json_integer(event.eventId));
  if (!event.applicationName.empty()) {
    json_object_set_new(item.Get(), "eventdata",
                        json_string(Utf8FromWide(event.applicationName).c_str()));
  }
  if (!event.applicationTimestamp.empty()) {
    const std::string digits = Utf8FromWide(event.applicationTimestamp);
    const auto time = static_cast<json_int_t>(std::strtoull(digits.c_str(), nullptr, 16));
    json_object_set_new(item.Get(), "exe-time", json_integer(time));
  }
  return item;
}

bool IsOfProvider(const EventRecord& record, const EventQuery& query) {
  return std::ranges::equal(record.provider, std::wstring_view(query.provider), {},
                            &LowerAscii<wchar_t>, &LowerAscii<wchar_t>);
}

// Reads the events of one query up to `tmEnd` and appends them.
void RunQuery(const Run& run, bool isModern, const EventQuery& query, int64_t tmStart,
              int64_t tmEnd, std::vector<CollectedEvent>& events) {
  const size_t before = events.size();
  const auto take = [&](EventRecord record) {
    // The older interface gives those of every provider.
    if (!isModern && !IsOfProvider(record, query)) {
      return true;
    }
    if (events.size() - before == kMaxEventsOfQuery) {
      return false;
    }
    events.push_back(Collected(run, std::move(record), query));
    return true;
  };
  const CompositeFilter filter = FilterOf(query, tmStart, tmEnd);
  const eventlog::TimeBudget budget(run.eventLog.clock);
  try {
    const ReadingEnd end =
        isModern ? eventlog::EventLogSession({}, run.eventLog.modern())
                       .QueryEvents(query.channel, query.provider, filter, budget, take)
                 : eventlog::LegacyEventLogReader({}, true, run.eventLog.classic())
                       .ReadEvents(query.channel, filter, budget, take);
    LogEnd(run, end, query, events.size() - before);
  } catch (const std::logic_error&) {  // a number of an event that does not convert
    events.erase(events.begin() + static_cast<ptrdiff_t>(before), events.end());
  }
}

}  // namespace

JsonOwner collect_event_logs(const Run& run, int64_t tmStart) {
  std::vector<CollectedEvent> events;
  const bool isModern = run.system.HasModernEventLog();
  const int64_t tmEnd = run.clock.Now();
  for (const EventQuery& query : EventQueries()) {
    RunQuery(run, isModern, query, tmStart, tmEnd, events);
  }
  const size_t count = events.size();
  TraceLogger(run.traceLog, kOperation)(
      L"Event log collection completed, found %d matching events within time range", count);
  if (count == 0) {
    TraceLogger(run.traceLog, kOperation)(L"No events to collect, return NULL");
    return {};
  }
  JsonOwner items(json_array());
  for (const CollectedEvent& event : events) {
    json_array_append_new(items.Get(), ItemOf(event).Release());
  }
  TraceLogger(run.traceLog, kOperation)(L"All events converted to JSON, %d entries total",
                                        json_array_size(items.Get()));
  return items;
}

}  // namespace ostrell
