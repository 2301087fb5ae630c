#include "env/report_settings.h"

#include <gtest/gtest.h>

#include "tests/support/fake_machine.h"

namespace ostrell {
namespace {

FakeRegistry::Key Value(const wchar_t* name) {
  return FakeRegistry::Of(RegistryRoot::kMachine, L"SOFTWARE\\Velmora\\Corvane\\Ostrell", name);
}

TEST(ReportSettings, LinkIsUtf8OfAtMost1040Bytes) {
  FakeRegistry registry;
  EXPECT_EQ(ReadReportLink(registry), "");
  std::wstring& link = registry.texts[Value(L"ReportLink")];
  link = std::wstring(518, L'a') + L'\u20AC';  // with its terminator
  EXPECT_EQ(ReadReportLink(registry), std::string(518, 'a') + "\xE2\x82\xAC");
  link += L'a';
  EXPECT_EQ(ReadReportLink(registry), "");
}

TEST(ReportSettings, IntervalIsTakenAsStoredAndFourHoursWithout) {
  FakeRegistry registry;
  EXPECT_EQ(ReadMinReportInterval(registry), 14400U);
  uint32_t& interval = registry.numbers[Value(L"MinReportInterval")];
  for (const uint32_t stored : {0U, 1U, 14399U, 4294967295U}) {
    interval = stored;
    EXPECT_EQ(ReadMinReportInterval(registry), stored == 0 ? 14400U : stored);
  }
}

}  // namespace
}  // namespace ostrell
