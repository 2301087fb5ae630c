#include <windows.h>

#include <gtest/gtest.h>

#include "app/run_limit.h"

namespace ostrell {
namespace {

// The numbers are counted by hand: 60 + 960 + 1260 + 4 * 1920 + 960 + 1560.
TEST(RunLimit, LongestRun) {
  EXPECT_EQ(longest_run::kSum, 12480);
  EXPECT_EQ(kRunLimit.count(), 14400);
}

TEST(RunLimitDeathTest, EndsAProcessThatHangsWithExitCodeZero) {
  constexpr DWORD kLongerThanTheLimit = 60000;
  EXPECT_EXIT(
      {
        LimitRun(std::chrono::milliseconds(1));
        Sleep(kLongerThanTheLimit);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace ostrell
