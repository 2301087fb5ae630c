#include "env/settings.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/fake_settings_store.h"

namespace ostrell {
namespace {

TEST(SettingsTest, NothingIsFoundOrWrittenWithoutStore) {
  const Settings settings;
  EXPECT_FALSE(settings.HasStore());
  EXPECT_EQ(settings.ReadInt32(L"key"), std::nullopt);
  EXPECT_EQ(settings.ReadInt64(L"key"), std::nullopt);
  settings.WriteInt64(L"key", 1);
}

TEST(SettingsTest, StoredValuesAreReadWhole) {
  FakeSettingsStore store;
  const Settings settings = store.Hold();
  for (const int64_t value : {int64_t{0}, std::numeric_limits<int64_t>::min(), int64_t{-1} << 31}) {
    store.numbers["key"] = static_cast<int32_t>(value);
    store.times["key"] = value;
    EXPECT_EQ(settings.ReadInt32(L"key"), static_cast<int32_t>(value));
    EXPECT_EQ(settings.ReadInt64(L"key"), value);
  }
}

// Any result but 0 is found; what a store leaves behind when it gives 0 does not count.
TEST(SettingsTest, ResultOfTheStoreDecides) {
  struct OddStore : FakeSettingsStore {
    int32_t result = 0;
    int32_t ReadInt32(const char*, int32_t* value) override {
      *value = 7;
      return result;
    }
    int32_t ReadInt64(const char*, int64_t* value) override {
      *value = 7;
      return result;
    }
  } store;
  const Settings settings = store.Hold();
  EXPECT_EQ(settings.ReadInt32(L"key"), std::nullopt);
  EXPECT_EQ(settings.ReadInt64(L"key"), std::nullopt);
  store.result = -1;
  EXPECT_EQ(settings.ReadInt32(L"key"), 7);
  EXPECT_EQ(settings.ReadInt64(L"key"), 7);
}

TEST(SettingsTest, KeysReachTheStoreAsUtf8) {
  FakeSettingsStore store;
  const Settings settings = store.Hold();
  store.numbers["caf\xC3\xA9"] = 5;
  EXPECT_EQ(settings.ReadInt32(L"caf\u00E9"), 5);
  settings.WriteInt64(std::wstring(300, L'x') + L"\u20AC", -3);
  const std::string longKey = std::string(300, 'x') + "\xE2\x82\xAC";
  EXPECT_EQ(store.written.back(), std::pair(longKey, int64_t{-3}));
  EXPECT_EQ(settings.ReadInt64(std::wstring(300, L'x') + L"\u20AC"), -3);
}

TEST(SettingsTest, StoreIsReleasedOnceByTheLastHolder) {
  FakeSettingsStore store;
  {
    Settings first = store.Hold();
    const Settings second = std::move(first);
    EXPECT_TRUE(second.HasStore());
    EXPECT_EQ(store.releases, 0);
  }
  EXPECT_EQ(store.releases, 1);
}

}  // namespace
}  // namespace ostrell
