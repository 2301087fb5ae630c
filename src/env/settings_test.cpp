#include "env/settings.h"

#include <gtest/gtest.h>

#include <limits>

#include "env/report_settings.h"
#include "tests/support/fake_machine.h"
#include "tests/support/fake_settings_store.h"

namespace ostrell {
namespace {

TEST(Settings, NothingIsFoundOrWrittenWithoutStore) {
  const Settings settings;
  EXPECT_FALSE(settings.HasStore());
  EXPECT_EQ(settings.ReadInt32(L"key"), std::nullopt);
  EXPECT_EQ(settings.ReadInt64(L"key"), std::nullopt);
  settings.WriteInt64(L"key", 1);
}

// Times past the year 2038 among them. Keys reach the store as UTF-8. Any result but 0 is found.
TEST(Settings, ValuesStayWhole) {
  const std::wstring key = std::wstring(300, L'x') + L"\u20AC";
  const std::string utf8 = std::string(300, 'x') + "\xE2\x82\xAC";
  FakeSettingsStore store;
  {
    const Settings settings = store.Hold();
    EXPECT_TRUE(settings.HasStore());
    EXPECT_EQ(settings.ReadInt32(key), std::nullopt);
    EXPECT_EQ(settings.ReadInt64(key), std::nullopt);
    for (const int64_t value : {int64_t{0}, int64_t{4294967296}, -(int64_t{1} << 31),
                                std::numeric_limits<int64_t>::min()}) {
      store.numbers[utf8] = static_cast<int32_t>(value);
      EXPECT_EQ(settings.ReadInt32(key), static_cast<int32_t>(value));
      settings.WriteInt64(key, value);
      EXPECT_EQ(store.times[utf8], value);
      EXPECT_EQ(settings.ReadInt64(key), value);
      store.yes = -1;
    }
    EXPECT_EQ(store.releases, 0);
  }
  EXPECT_EQ(store.releases, 1);
}

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
