#include <gtest/gtest.h>

#include "eventlog/apis.h"
#include "eventlog/classic_reader.h"
#include "eventlog/session.h"

namespace eventlog {
namespace {

TEST(System, ErrorTexts) {
  EXPECT_NE(SystemErrorText(2).find(L"\r\n"), std::wstring::npos);
  EXPECT_EQ(SystemErrorText(0xEFFFFFFF), L"Unknown error (code: 4026531839)");
}

// Wine's own library lacks functions of the family: what is missing fails in the ordinary way.
TEST(System, MissingFunctionsFail) {
  EventLogSession session(L"");
  EXPECT_TRUE(session.IsOpen());
  EXPECT_EQ(session.QueryEvents(L"No such channel", L"", CompositeFilter(), TimeBudget(), {}),
            ReadingEnd::kComplete);
  void* handles[1];
  uint32_t returned = 7;
  EXPECT_FALSE(LoadedEvtApi().next(nullptr, 1, handles, 0, 0, &returned));
  EXPECT_EQ(returned, 0u);
}

// Any log opens under Wine, and holds nothing.
TEST(System, EmptyClassicLog) {
  LegacyEventLogReader reader;
  EXPECT_EQ(reader.ReadEvents(L"Application", CompositeFilter(), TimeBudget(), {}),
            ReadingEnd::kComplete);
  EXPECT_EQ(reader.LastError(), L"");
}

}  // namespace
}  // namespace eventlog
