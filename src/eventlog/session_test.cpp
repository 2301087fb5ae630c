#include "eventlog/session.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/event_reading.h"

namespace eventlog {
namespace {

using ostrell::EventReading;
using ostrell::RecordedCase;

// "x*260" is 260 times an x.
std::wstring Name(const std::string& text) {
  const size_t star = text.find('*');
  return star == text.npos ? ostrell::WideFromUtf8(text).value()
                           : std::wstring(std::stoul(text.substr(star + 1)), text[0]);
}

// Events of "System" by the provider P with ids from 1 on. The list of channels is `others` times
// "Other" and then each `channel`, or as it is by itself.
void Prepare(const RecordedCase& recorded, EventReading& reading) {
  const int64_t count = recorded.Number("events");
  for (int64_t id = 1; id <= count; ++id) {
    ostrell::RecordedEventText event{.provider = "P", .id = std::to_string(id)};
    event.level = id == count && recorded.Has("last level") ? recorded["last level"] : "2";
    reading.log.modern[L"System"] += event.Text();
  }
  reading.log.channels.assign(recorded.Has("others") ? recorded.Number("others") : 0, L"Other");
  for (const std::string& channel : recorded.All("channel")) {
    reading.log.channels.push_back(Name(channel));
  }
  reading.log.unrendered = Name(reading.Field("unrendered"));
  reading.log.announced =
      static_cast<uint32_t>(recorded.Has("announced") ? recorded.Number("announced") : 0);
  reading.log.succeedsAtEnd = recorded.Has("succeeds at end");
  reading.log.rendersLess = recorded.Has("renders half");
}

std::string Outcome(const RecordedCase& recorded, EventReading& reading) {
  CompositeFilter filter;
  if (recorded.Has("even ids")) {
    filter.Add(std::make_unique<CustomFilter>(
        [](const EventRecord& record) { return record.eventId % 2 == 0; }));
  }
  EventLogSession session(reading.Server(), ostrell::FakeEventLog::Modern());
  try {
    return reading.Outcome(session, [&](const auto& budget, const auto& take) {
      return session.QueryEvents(L"System", Name(reading.Field("provider")), filter, budget, take);
    });
  } catch (const std::invalid_argument&) {
    return "no number";
  }
}

// A case says of the service what it holds and does; of the outcome: records, end, last error.
TEST(EventLogSession, RecordedCases) {
  for (const RecordedCase& recorded : ostrell::CasesOf("event_session")) {
    SCOPED_TRACE(recorded.Name());
    EventReading reading(recorded, L"System");
    Prepare(recorded, reading);
    EXPECT_EQ(Outcome(recorded, reading), recorded["expect"]);
    EXPECT_EQ(reading.log.open, 0);
    EXPECT_EQ(reading.log.opened, recorded.Number("handles"));
    EXPECT_EQ(reading.log.queries.size(), recorded.Number("queries"));
  }
}

}  // namespace
}  // namespace eventlog
