#include "eventlog/select_xpath.h"

#include <gtest/gtest.h>

namespace eventlog {
namespace {

using Ids = std::vector<uint32_t>;

TEST(SelectXPath, OneFilter) {
  const auto only = [](std::unique_ptr<EventFilter> filter) {
    CompositeFilter composite;
    composite.Add(std::move(filter));
    std::vector<const EventFilter*> rest;
    return BuildSelectXPath(L"", composite, rest);
  };
  const uint64_t ticks = ostrell::TicksFromSeconds(1704067200) + 9999999;
  EXPECT_EQ(only(std::make_unique<TimeRangeFilter>(false, true, 0, ticks)),
            L"( and TimeCreated/@SystemTime &lt;= '2024-01-01T00:00:00.000000Z')");
  EXPECT_EQ(only(std::make_unique<TimeRangeFilter>(true, false, ~uint64_t{0}, 0)),
            L"( TimeCreated/@SystemTime &gt;= '0000-00-00T00:00:00.000000Z')");
  EXPECT_EQ(only(std::make_unique<TimeRangeFilter>(false, false, 1, 2)), L"");
  EXPECT_EQ(only(std::make_unique<EventIdFilter>(Ids{7000, 0, 4294967295})),
            L"(EventID=7000 or EventID=0 or EventID=4294967295)");
  EXPECT_EQ(only(std::make_unique<EventIdFilter>(Ids{})), L"");
  EXPECT_EQ(only(std::make_unique<EventIdFilter>(5, 9)), L"( EventID &gt;= 5 and EventID &lt;= 9)");
  EXPECT_EQ(only(std::make_unique<EventIdFilter>(0, 9)), L"( and EventID &lt;= 9)");
  EXPECT_EQ(only(std::make_unique<EventIdFilter>(0, 0)), L"");
  EXPECT_EQ(only(std::make_unique<LevelFilter>(Ids{0, 1, 0, 2})), L"(Level=1 or Level=2)");
  EXPECT_EQ(only(std::make_unique<LevelFilter>(Ids{0, 0})), L"");
}

TEST(SelectXPath, WhatHasNoTextIsTestedInMemory) {
  CompositeFilter composite;
  composite.Add(std::make_unique<EventIdFilter>(Ids{}));
  composite.Add(std::make_unique<LevelFilter>(Ids{2}));
  composite.Add(std::make_unique<CompositeFilter>());
  composite.Add(std::make_unique<CustomFilter>([](const EventRecord&) { return true; }));
  std::vector<const EventFilter*> rest;
  EXPECT_EQ(BuildSelectXPath(L"it's", composite, rest), L"(Provider/@Name='it's') and (Level=2)");
  const auto& children = composite.children;
  EXPECT_EQ(rest, (std::vector<const EventFilter*>{children[0].get(), children[2].get(),
                                                   children[3].get()}));
}

TEST(QueryDocument, OneOfTheUnifiedReport) {
  CompositeFilter january;  // 2024-01-01 00:00:00 to 2024-01-31 23:59:59 UTC
  january.Add(std::make_unique<TimeRangeFilter>(1704067200, 1706745599));
  january.Add(std::make_unique<EventIdFilter>(Ids{7000, 7009}));
  std::vector<const EventFilter*> rest;
  EXPECT_EQ(
      BuildQueryDocument(L"System", BuildSelectXPath(L"Service Control Manager", january, rest)),
      L"\n<QueryList>\n"
      L"  <Query Id=\"0\" Path=\"System\">\n"
      L"    <Select Path=\"System\">*[System[(Provider/@Name='Service Control Manager') and ( "
      L"TimeCreated/@SystemTime &gt;= '2024-01-01T00:00:00.000000Z' and "
      L"TimeCreated/@SystemTime &lt;= '2024-01-31T23:59:59.000000Z') and "
      L"(EventID=7000 or EventID=7009)]]</Select>\n"
      L"  </Query>\n"
      L"</QueryList>\n");
  EXPECT_EQ(BuildQueryDocument(L"S", L""),
            L"\n<QueryList>\n  <Query Id=\"0\" Path=\"S\">\n    <Select Path=\"S\">*</Select>\n"
            L"  </Query>\n</QueryList>\n");
}

TEST(QueryDocument, MustFitItsBuffer) {
  const size_t around = BuildQueryDocument(L"S", L"x")->size() - 1;
  EXPECT_TRUE(BuildQueryDocument(L"S", std::wstring(4095 - around, L'x')).has_value());
  EXPECT_FALSE(BuildQueryDocument(L"S", std::wstring(4096 - around, L'x')).has_value());
}

}  // namespace
}  // namespace eventlog
