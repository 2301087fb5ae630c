#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrell {

// The members of an event's System section that a query can ask for. One that is missing there, or
// is not of its form, has no value.
struct EventSystem {
  std::optional<std::string> provider;
  std::optional<uint64_t> eventId;
  std::optional<uint64_t> level;
  std::optional<uint64_t> timeCreated;  // ticks of 100 ns since 1601, UTC
};

struct RecordedEvent {
  std::string xml;  // as the event service renders it: on one line
  EventSystem system;
};

// The events of a channel's file: rendered events in UTF-8 with an empty line between two. To be
// read and edited by hand an event may stand on several lines, broken between tags: blanks at the
// ends of a line and the line's end are no part of it. Nothing when one of them is not well formed
// or is no Event with a System section; no events in an empty text.
std::optional<std::vector<RecordedEvent>> ParseRecordedEvents(std::string_view text);

// The ticks of a time as events and queries write it, "2024-01-31T23:59:59.123Z": up to nine digits
// of fraction, those past the seventh without meaning, or none. Nothing for other text and for what
// is no date.
std::optional<uint64_t> TicksFromEventTime(std::string_view text);

}  // namespace ostrell
