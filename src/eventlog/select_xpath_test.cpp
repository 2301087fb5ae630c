#include "eventlog/select_xpath.h"

#include <gtest/gtest.h>

namespace eventlog {
namespace {

// What the condition is made of: filters_test.cpp.
TEST(QueryDocument, ConditionStandsInItsPlace) {
  EXPECT_EQ(BuildQueryDocument(L"System", L"(Level=2)"),
            L"\n<QueryList>\n"
            L"  <Query Id=\"0\" Path=\"System\">\n"
            L"    <Select Path=\"System\">*[System[(Level=2)]]</Select>\n"
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
