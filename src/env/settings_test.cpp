#include "env/settings.h"

#include <gtest/gtest.h>

#include <limits>

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

// Times past the year 2038 among them. Keys reach the store as UTF-8.
TEST(Settings, ValuesStayWhole) {
  const std::wstring key = std::wstring(300, L'x') + L"\u20AC";
  const std::string utf8 = std::string(300, 'x') + "\xE2\x82\xAC";
  FakeSettingsStore store;
  {
    const Settings settings = store.Hold();
    EXPECT_TRUE(settings.HasStore());
    for (const int64_t value : {int64_t{0}, int64_t{4294967296}, -(int64_t{1} << 31),
                                std::numeric_limits<int64_t>::min()}) {
      store.numbers[utf8] = static_cast<int32_t>(value);
      EXPECT_EQ(settings.ReadInt32(key), static_cast<int32_t>(value));
      settings.WriteInt64(key, value);
      EXPECT_EQ(store.times[utf8], value);
      EXPECT_EQ(settings.ReadInt64(key), value);
    }
    EXPECT_EQ(store.releases, 0);
  }
  EXPECT_EQ(store.releases, 1);
}

// Any result but 0 is found; what a store leaves behind when it gives 0 does not count.
TEST(Settings, ResultOfTheStoreDecides) {
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

}  // namespace
}  // namespace ostrell
