#include "eventlog/filters.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "base/text.h"
#include "eventlog/select_xpath.h"
#include "tests/support/recorded_cases.h"

namespace eventlog {
namespace {

using ostrell::RecordedCase;

// "ids 7000 7009": a kind and the arguments of its constructor.
std::unique_ptr<EventFilter> FilterOf(const std::string& text) {
  std::istringstream words(text);
  std::string kind;
  words >> kind;
  const std::vector<uint64_t> numbers(std::istream_iterator<uint64_t>(words), {});
  const auto number = [&numbers](size_t i) { return static_cast<uint32_t>(numbers.at(i)); };
  if (kind == "seconds") {
    return std::make_unique<TimeRangeFilter>(int64_t{number(0)}, int64_t{number(1)});
  }
  if (kind == "ticks") {
    return std::make_unique<TimeRangeFilter>(number(0) != 0, number(1) != 0, numbers.at(2),
                                             numbers.at(3));
  }
  if (kind == "id-range") {
    return std::make_unique<EventIdFilter>(number(0), number(1));
  }
  const std::vector<uint32_t> list(numbers.begin(), numbers.end());
  if (kind == "ids") {
    return std::make_unique<EventIdFilter>(list);
  }
  if (kind == "levels") {
    return std::make_unique<LevelFilter>(list);
  }
  if (kind == "test") {
    return std::make_unique<CustomFilter>([](const EventRecord&) { return true; });
  }
  return std::make_unique<CompositeFilter>();
}

// "ID LEVEL TICKS", or without a date.
EventRecord RecordOf(const std::string& text) {
  EventRecord record;
  uint64_t ticks = 0;
  std::istringstream words(text);
  words >> record.eventId >> record.level;
  if (words >> ticks) {
    record.timeCreated = ostrell::SystemTimeFromTicks(ticks).value();
  }
  return record;
}

// What a case's filters say to the service, which of them remain to be tested here, and what they
// let pass.
TEST(EventFilter, RecordedCases) {
  for (const RecordedCase& recorded : ostrell::CasesOf("event_filter")) {
    SCOPED_TRACE(recorded.Name());
    CompositeFilter composite;
    for (const std::string& filter : recorded.All("filter")) {
      composite.Add(FilterOf(filter));
    }
    for (const std::string& record : recorded.All("passes")) {
      EXPECT_TRUE(composite.Matches(RecordOf(record))) << record;
    }
    for (const std::string& record : recorded.All("fails")) {
      EXPECT_FALSE(composite.Matches(RecordOf(record))) << record;
    }
    const std::string provider = recorded.Has("provider") ? recorded["provider"] : "";
    std::vector<const EventFilter*> rest;
    const auto query = BuildSelectXPath(ostrell::WideFromUtf8(provider).value(), composite, rest);
    EXPECT_EQ(ostrell::Utf8FromWide(query), recorded["query"]);
    std::istringstream memory(recorded.Has("memory") ? recorded["memory"] : "");
    std::vector<const EventFilter*> expected;
    for (size_t child = 0; memory >> child;) {
      expected.push_back(composite.children.at(child).get());
    }
    EXPECT_EQ(rest, expected);
  }
}

TEST(CompositeFilter, StopsAtTheFirstFalse) {
  CompositeFilter composite;
  EXPECT_TRUE(composite.Matches(EventRecord()));
  int calls = 0;
  for (const bool passes : {true, false, true}) {
    composite.Add(std::make_unique<CustomFilter>([&calls, passes](const EventRecord&) {
      ++calls;
      return passes;
    }));
  }
  EXPECT_FALSE(composite.Matches(EventRecord()));
  EXPECT_EQ(calls, 2);
  EXPECT_THROW(CustomFilter(nullptr).Matches(EventRecord()), std::bad_function_call);
}

}  // namespace
}  // namespace eventlog
