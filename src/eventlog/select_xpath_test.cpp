#include "eventlog/select_xpath.h"

#include <gtest/gtest.h>

namespace eventlog {
namespace {

std::wstring XPath(const std::wstring& provider, const CompositeFilter& composite) {
  std::vector<const EventFilter*> rest;
  return BuildSelectXPath(provider, composite, rest);
}

// 2024-01-01 00:00:00 to 2024-01-31 23:59:59 UTC; the predicate cannot be put into words.
CompositeFilter January(std::vector<uint32_t> ids) {
  CompositeFilter composite;
  composite.Add(std::make_unique<TimeRangeFilter>(1704067200, 1706745599));
  composite.Add(std::make_unique<EventIdFilter>(std::move(ids)));
  composite.Add(std::make_unique<CustomFilter>([](const EventRecord&) { return true; }));
  return composite;
}

TEST(SelectXPath, ProviderTimeAndIds) {
  const CompositeFilter composite = January({1000});
  std::vector<const EventFilter*> rest;
  EXPECT_EQ(BuildSelectXPath(L"Application Error", composite, rest),
            L"(Provider/@Name='Application Error') and ( TimeCreated/@SystemTime &gt;= "
            L"'2024-01-01T00:00:00.000000Z' and TimeCreated/@SystemTime &lt;= "
            L"'2024-01-31T23:59:59.000000Z') and (EventID=1000)");
  ASSERT_EQ(rest.size(), 1u);
  EXPECT_EQ(rest[0], composite.children[2].get());
}

TEST(SelectXPath, OneFilter) {
  const auto only = [](std::unique_ptr<EventFilter> filter) {
    CompositeFilter composite;
    composite.Add(std::move(filter));
    return XPath(L"", composite);
  };
  using Ids = std::vector<uint32_t>;
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
  EXPECT_EQ(only(std::make_unique<CompositeFilter>(January({1}))), L"");
}

TEST(SelectXPath, WhatHasNoTextIsTestedInMemory) {
  CompositeFilter composite;
  composite.Add(std::make_unique<EventIdFilter>(std::vector<uint32_t>()));
  composite.Add(std::make_unique<LevelFilter>(std::vector<uint32_t>{2}));
  composite.Add(std::make_unique<CompositeFilter>());
  std::vector<const EventFilter*> rest;
  EXPECT_EQ(BuildSelectXPath(L"it's", composite, rest), L"(Provider/@Name='it's') and (Level=2)");
  EXPECT_EQ(rest, (std::vector<const EventFilter*>{composite.children[0].get(),
                                                   composite.children[2].get()}));
}

TEST(QueryDocument, BothOfTheUnifiedReport) {
  EXPECT_EQ(BuildQueryDocument(L"Application", XPath(L"Application Error", January({1000}))),
            L"\n<QueryList>\n"
            L"  <Query Id=\"0\" Path=\"Application\">\n"
            L"    <Select Path=\"Application\">*[System[(Provider/@Name='Application Error') and ( "
            L"TimeCreated/@SystemTime &gt;= '2024-01-01T00:00:00.000000Z' and "
            L"TimeCreated/@SystemTime &lt;= '2024-01-31T23:59:59.000000Z') and "
            L"(EventID=1000)]]</Select>\n"
            L"  </Query>\n"
            L"</QueryList>\n");
  EXPECT_EQ(
      BuildQueryDocument(L"System", XPath(L"Service Control Manager", January({7000, 7009}))),
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
