#include "eventlog/filters.h"

#include <gtest/gtest.h>

namespace eventlog {
namespace {

EventRecord At(uint64_t ticks) {
  EventRecord record;
  record.timeCreated = ostrell::SystemTimeFromTicks(ticks).value_or(ostrell::SystemTime{});
  return record;
}

EventRecord WithId(uint32_t id) {
  EventRecord record;
  record.eventId = id;
  return record;
}

constexpr uint64_t kMillisecond = 10000;

TEST(Filters, TimeRangeIncludesItsBounds) {
  const uint64_t from = ostrell::TicksFromSeconds(1704067200);
  const uint64_t to = ostrell::TicksFromSeconds(1706745599);
  const TimeRangeFilter both(1704067200, 1706745599);
  EXPECT_FALSE(both.Matches(At(from - kMillisecond)));
  EXPECT_TRUE(both.Matches(At(from)));
  EXPECT_TRUE(both.Matches(At(to)));
  EXPECT_FALSE(both.Matches(At(to + kMillisecond)));
  EXPECT_FALSE(both.Matches(EventRecord()));  // no date

  const TimeRangeFilter upper(false, true, 0, to);
  EXPECT_TRUE(upper.Matches(EventRecord()));
  EXPECT_FALSE(upper.Matches(At(to + kMillisecond)));
  const TimeRangeFilter lower(true, false, from, 0);
  EXPECT_FALSE(lower.Matches(At(from - kMillisecond)));
  EXPECT_TRUE(lower.Matches(At(to + kMillisecond)));
  EXPECT_TRUE(TimeRangeFilter(false, false, 5, 4).Matches(At(from)));
}

TEST(Filters, EventIds) {
  const EventIdFilter list(std::vector<uint32_t>{7000, 7009});
  EXPECT_TRUE(list.Matches(WithId(7009)));
  EXPECT_FALSE(list.Matches(WithId(7001)));
  EXPECT_FALSE(EventIdFilter(std::vector<uint32_t>()).Matches(WithId(0)));

  const struct {
    uint32_t least, most, id;
    bool passes;
  } ranges[] = {{0, 0, 5, true}, {0, 5, 5, true},  {0, 5, 6, false}, {5, 0, 4, false},
                {5, 0, 5, true}, {5, 9, 4, false}, {5, 9, 9, true},  {5, 9, 10, false}};
  for (const auto& range : ranges) {
    EXPECT_EQ(EventIdFilter(range.least, range.most).Matches(WithId(range.id)), range.passes)
        << range.least << " " << range.most << " " << range.id;
  }
}

TEST(Filters, Levels) {
  EventRecord record;
  record.level = 2;
  EXPECT_TRUE(LevelFilter({0, 3, 2}).Matches(record));
  EXPECT_FALSE(LevelFilter({1, 3}).Matches(record));
  record.level = 0;
  EXPECT_FALSE(LevelFilter({0}).Matches(record));
}

TEST(Filters, CompositeStopsAtTheFirstFalse) {
  CompositeFilter composite;
  EXPECT_TRUE(composite.Matches(EventRecord()));
  int calls = 0;
  const auto answer = [&calls](bool passes) {
    return std::make_unique<CustomFilter>([&calls, passes](const EventRecord&) {
      ++calls;
      return passes;
    });
  };
  composite.Add(answer(true));
  EXPECT_TRUE(composite.Matches(EventRecord()));
  composite.Add(answer(false));
  composite.Add(answer(true));
  EXPECT_FALSE(composite.Matches(EventRecord()));
  EXPECT_EQ(calls, 3);
  EXPECT_THROW(CustomFilter(nullptr).Matches(EventRecord()), std::bad_function_call);
}

}  // namespace
}  // namespace eventlog
