#include "eventlog/filters.h"

#include <gtest/gtest.h>

namespace eventlog {
namespace {

EventRecord Record(uint32_t id, uint32_t level = 0, uint64_t ticks = 0) {
  EventRecord record;
  record.eventId = id;
  record.level = level;
  record.timeCreated = ostrell::SystemTimeFromTicks(ticks).value_or(ostrell::SystemTime{});
  return record;
}

bool Passes(const TimeRangeFilter& filter, uint64_t ticks) {
  return filter.Matches(Record(0, 0, ticks));
}

TEST(Filters, TimeRangeIncludesItsBounds) {
  constexpr uint64_t kMillisecond = 10000;
  const uint64_t from = ostrell::TicksFromSeconds(1704067200);
  const uint64_t to = ostrell::TicksFromSeconds(1706745599);
  const TimeRangeFilter both(1704067200, 1706745599);
  EXPECT_FALSE(Passes(both, from - kMillisecond));
  EXPECT_TRUE(Passes(both, from));
  EXPECT_TRUE(Passes(both, to));
  EXPECT_FALSE(Passes(both, to + kMillisecond));
  EXPECT_FALSE(both.Matches(EventRecord()));  // no date

  const TimeRangeFilter upper(false, true, 0, to);
  EXPECT_TRUE(upper.Matches(EventRecord()));
  EXPECT_FALSE(Passes(upper, to + kMillisecond));
  const TimeRangeFilter lower(true, false, from, 0);
  EXPECT_FALSE(Passes(lower, from - kMillisecond));
  EXPECT_TRUE(Passes(lower, to + kMillisecond));
  EXPECT_TRUE(Passes({false, false, 5, 4}, from));
}

TEST(Filters, EventIds) {
  const EventIdFilter list(std::vector<uint32_t>{7000, 7009});
  EXPECT_TRUE(list.Matches(Record(7009)));
  EXPECT_FALSE(list.Matches(Record(7001)));
  EXPECT_FALSE(EventIdFilter(std::vector<uint32_t>()).Matches(Record(0)));

  const struct {
    uint32_t least, most, id;
    bool passes;
  } ranges[] = {{0, 0, 5, true}, {0, 5, 5, true},  {0, 5, 6, false}, {5, 0, 4, false},
                {5, 0, 5, true}, {5, 9, 4, false}, {5, 9, 9, true},  {5, 9, 10, false}};
  for (const auto& range : ranges) {
    EXPECT_EQ(EventIdFilter(range.least, range.most).Matches(Record(range.id)), range.passes)
        << range.least << " " << range.most << " " << range.id;
  }
}

TEST(Filters, Levels) {
  EXPECT_TRUE(LevelFilter({0, 3, 2}).Matches(Record(0, 2)));
  EXPECT_FALSE(LevelFilter({1, 3}).Matches(Record(0, 2)));
  EXPECT_FALSE(LevelFilter({0}).Matches(Record(0, 0)));
}

TEST(Filters, CompositeStopsAtTheFirstFalse) {
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
