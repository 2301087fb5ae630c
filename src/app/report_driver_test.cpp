#include "app/report_driver.h"

#include <gtest/gtest.h>

#include "tests/support/fake_settings_store.h"

namespace ostrell {
namespace {

TEST(FeatureName, OwnRowAndDefault) {
  EXPECT_STREQ(FeatureName(kAppIdTable, kOwnAppId), "ostrell");
  EXPECT_STREQ(FeatureName({}, kOwnAppId), "QXAPP");
}

TEST(IsReport, OnlyAnExplicitZeroSwitchesOff) {
  EXPECT_TRUE(IsReport(Settings()));
  FakeSettingsStore store;
  const Settings settings = store.Hold();
  EXPECT_TRUE(IsReport(settings));
  store.times["isReport"] = 0;  // stored under another width: not found
  EXPECT_TRUE(IsReport(settings));
  for (const int32_t value : {0, 1, -1, 256}) {
    store.numbers["isReport"] = value;
    EXPECT_EQ(IsReport(settings), value != 0) << value;
  }
}

}  // namespace
}  // namespace ostrell
